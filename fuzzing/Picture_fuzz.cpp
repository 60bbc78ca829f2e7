#include "CameToSomething.h"
#include "OffscreenApplication.h"
#include "platform/Picture.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <cstdlib>

// A picture file. Metafiles go to their helper, which may die.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    NeedApplication();
    static const TemporaryFolder folder;
    const std::string path = folder.File("picture");
    MakeFile(path, {reinterpret_cast<const char*>(bytes), size});
    const Picture picture = Picture::FromFile(path);
    if ((picture.Width() > 0) != (picture.Height() > 0))
        std::abort();
    cameToSomething = picture.Width() > 0;
    return 0;
}
