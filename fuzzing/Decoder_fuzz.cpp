#include "decoder/AttachmentDecoder.h"
#include "demo/support/TemporaryFolder.h"
#include "fuzzing/CameToSomething.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>

// The body of an article, as it came over the wire. Whatever is stored lies beside it, under a visible bare name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const TemporaryFolder folder;
    const std::string body = folder.File("body");
    MakeFile(body, {reinterpret_cast<const char*>(bytes), size});
    AttachmentDecoder decoder;
    decoder.SetDecodeFilename(body);
    if ((decoder.DecodeStatus() > 0) == decoder.StoredNames().empty())
        std::abort();
    cameToSomething = decoder.DecodeStatus() > 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        if (entry.path() != body) {
            const bool isSets = entry.path().filename() == ".tamarack-parts";
            if (!isSets && (entry.path().filename().native().starts_with('.') || decoder.DecodeStatus() <= 0))
                std::abort();
            std::filesystem::remove_all(entry.path());
        }
    }
    return 0;
}
