#include "demo/support/TemporaryFolder.h"
#include "platform/Application.h"

#include <QApplication>

#include <benchmark/benchmark.h>
#include <cstdlib>

int main(int argc, char** argv)
{
    // The windows of a benchmark are for nobody to see, and its settings are nobody's.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const TemporaryFolder home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        setenv(name, home.File(name).c_str(), 1);

    benchmark::Initialize(&argc, argv);
    Application application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
