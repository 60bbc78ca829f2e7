#include "catalogue/GroupText.h"
#include "fuzzing/CameToSomething.h"

#include <cstdint>
#include <cstdlib>

// The reply to LIST: the cutting goes on, ends, and gives parts of the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    std::string_view text(reinterpret_cast<const char*>(bytes), size);
    cameToSomething = !text.empty();
    while (!text.empty()) {
        const std::size_t before = text.size();
        if (TakeGroup(text).size() > before || text.size() >= before)
            std::abort();
    }
    return 0;
}
