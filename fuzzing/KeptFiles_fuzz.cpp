#include "base/Files.h"
#include "catalogue/PointerFile.h"
#include "demo/support/TemporaryFolder.h"
#include "fuzzing/CameToSomething.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>

// A pointer file, or a file of fields, of any bytes. A pointer that was written is found again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const TemporaryFolder folder;
    const std::string path = folder.File("kept");
    MakeFile(path, {reinterpret_cast<const char*>(bytes), size});

    for (const auto read : {&SequentialInput::ReadField, &SequentialInput::ReadQuotedField}) {
        SequentialInput input(path);
        for (std::size_t fields = 0; !input.AtEnd(); ++fields) {
            const std::string_view field = (input.*read)();
            if (field.size() > size || fields > size)
                std::abort();
            cameToSomething = cameToSomething || !field.empty();
        }
    }

    const PointerFile pointers(path);
    const std::string group = "alt.kites";
    const PointerFile::Lookup found = pointers.Find(group);
    if (!pointers.Write(found.recordNumber, group, 7001) || pointers.Find(group).article != 7001)
        std::abort();
    return 0;
}
