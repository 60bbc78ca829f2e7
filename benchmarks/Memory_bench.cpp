#include "benchmarks/ProgramInFolder.h"
#include "benchmarks/ServerProcess.h"
#include "demo/sample/Encoders.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>

// How much memory the program takes to fetch and store one very large article. It is measured once, in a program that
// does nothing else: what an earlier run had given back to the allocator would not be seen.

namespace {

const std::string group = "alt.kites";
constexpr std::size_t bodySize = 100 * 1000 * 1000;
constexpr std::size_t attachmentSize = bodySize / 63 * 45;

SampleGroups LargeArticle()
{
    return {GroupOf(group, 1, {Uuencode(std::string(attachmentSize, 'k'), "kite.jpg"), Uuencode("k", "small.jpg")})};
}

// VmHWM:    123456 kB   (a line of /proc/self/status)
double Bytes(std::string_view name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name))
            return std::stod(line.substr(name.size())) * 1024;
    }
    return 0;
}

void StoreLargeBody(benchmark::State& state)
{
    const ServerProcess server(LargeArticle);
    ProgramInFolder program(server.Port(), group);
    for (auto _ : state) {
        const double resting = Bytes("VmRSS:");
        if (!program.Search(2))
            state.SkipWithError("the program went wrong");
        const double taken = Bytes("VmHWM:") - resting;
        const double left = Bytes("VmRSS:") - resting;
        char label[120];
        std::snprintf(label, sizeof label, "peak %.0f MB: %.2f times the body (aim under 2.5); %.0f MB left afterwards",
            taken / 1e6, taken / static_cast<double>(bodySize), left / 1e6);
        state.SetLabel(label);
    }
    state.SetBytesProcessed(bodySize);
}

BENCHMARK(StoreLargeBody)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}
