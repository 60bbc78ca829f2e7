#include "catalogue/GroupText.h"
#include "fuzzing/CameToSomething.h"

#include <cstdint>
#include <cstdlib>

// The reply to LIST: the cutting goes on, ends, and gives parts of the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    GroupText lines(text);
    std::size_t last = 0;
    while (lines.NextLine()) {
        if (lines.Position() <= last || lines.Name().size() > text.size())
            std::abort();
        last = lines.Position();
    }
    cameToSomething = last > 0;
    return 0;
}
