#include "platform/Application.h"
#include "platform/Picture.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <cstdlib>

// A picture file. Metafiles go to their helper, which may die.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static int argc = 1;
    static char name[] = "picture_fuzz";
    static char* argv[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // Never destroyed: the end of the process is not what is tried here.
    static const Application& application = *new Application(argc, argv);
    (void)application;
    static const TemporaryFolder folder;
    const std::string path = folder.File("picture");
    MakeFile(path, {reinterpret_cast<const char*>(bytes), size});
    const Picture picture = Picture::FromFile(path);
    if ((picture.Width() > 0) != (picture.Height() > 0))
        std::abort();
    return 0;
}
