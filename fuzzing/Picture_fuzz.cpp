#include "demo/support/TemporaryFolder.h"
#include "fuzzing/CameToSomething.h"
#include "fuzzing/OffscreenApplication.h"
#include "picture-reader/Reading.h"
#include "platform/Bitmap.h"

#include <cstdint>
#include <cstdlib>

// A picture file: it goes to its helper, which may die, and what the helper takes away before it reads one is tried
// here.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    NeedApplication();
    static const TemporaryFolder folder;
    const QByteArray file = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    if (PixelParts(file).size() > file.size())
        std::abort();
    const std::string path = folder.File("picture");
    MakeFile(path, {reinterpret_cast<const char*>(bytes), size});
    const Bitmap picture = Bitmap::FromFile(path);
    if ((picture.Width() > 0) != (picture.Height() > 0))
        std::abort();
    cameToSomething = picture.Width() > 0;
    return 0;
}
