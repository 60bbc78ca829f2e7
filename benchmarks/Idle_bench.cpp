#include "benchmarks/ProgramInFolder.h"
#include "benchmarks/SideBySide.h"
#include "demo/sample/Loopback.h"
#include "demo/support/Screen.h"

#include <QTimer>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

// What the program costs while it waits for a server that never says a word, plain, or behind a handshake.

namespace {

using namespace std::chrono_literals;

void TenSecondsInAWait(benchmark::State& state, Wire wire)
{
    // The system connects a client to a socket that listens, also if nobody ever accepts it.
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const std::uint16_t port = ListenOnLoopback(listener);
    const Identity identity;
    std::thread server;
    if (wire == Wire::Encrypted)
        server = std::thread([&] {
            const int descriptor = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            char byte = 0;
            (void)Channel(descriptor, &identity).Read(&byte, 1);
            close(descriptor);
        });
    ProgramInFolder program(port, "alt.kites", wire);
    for (auto _ : state) {
        double start = 0;
        double end = 0;
        QTimer::singleShot(1s, Qt::PreciseTimer, [&start] { start = ProcessorTime(); });
        QTimer::singleShot(11s, Qt::PreciseTimer, [&end] {
            end = ProcessorTime();
            Click("cmdStop");
        });
        Click("cmdFindNow");
        if (end == 0) {
            state.SkipWithError("the program did not wait");
            break;
        }
        state.SetIterationTime(end - start);
        char label[100];
        std::snprintf(label, sizeof label, "%.3f %% of a processor (aim under 1 %%)", (end - start) / 10 * 100);
        state.SetLabel(label);
    }
    if (server.joinable())
        server.join();
    close(listener);
}

BENCHMARK_CAPTURE(TenSecondsInAWait, plain, Wire::Plain)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(TenSecondsInAWait, encrypted, Wire::Encrypted)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}
