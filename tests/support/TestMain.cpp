#include "demo/support/TemporaryFolder.h"
#include "platform/Application.h"

#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // A test opens windows that nobody is to see, also on a machine with a display.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);

    // Whatever a test forgets to redirect must not reach the settings and files of the person who runs it.
    const TemporaryFolder home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        setenv(name, home.File(name).c_str(), 1);

    testing::InitGoogleTest(&argc, argv);
    Application application(argc, argv);
    return RUN_ALL_TESTS();
}
