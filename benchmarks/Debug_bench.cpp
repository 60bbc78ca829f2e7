#include "base/Files.h"
#include "benchmarks/SideBySide.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"

#include "diagnostics/DebugConsole.h"
#include <filesystem>

// What the debug window costs when a server sends what is no line of text.

namespace {

void LogOneLongLine(benchmark::State& state)
{
    constexpr std::size_t packetSize = 64 * 1024;
    const std::string line(20'000'000, 'x');
    const TemporaryFolder folder;
    Desktop desktop;
    frmTamarack mainForm;
    NewsSession session(mainForm, desktop);
    session.AppDir = folder.Path();
    const std::string logFile = folder.File("debug.log");
    DebugConsole window(session, desktop);
    window.Open();
    std::string lines;
    while (lines.size() < line.size())
        lines += std::string(62, 'x') + "\r\n";
    const auto log = [&](const std::string& text) {
        const std::uintmax_t before = FileExists(logFile) ? std::filesystem::file_size(logFile) : 0;
        return Timed([&] {
            for (std::size_t at = 0; at < line.size(); at += packetSize) {
                session.DebugLog(text.substr(at, packetSize));
                WindowNamed("frmDebug")->repaint();
            }
            return std::filesystem::file_size(logFile) >= before + line.size();
        });
    };
    for (auto _ : state)
        CompareSideBySide(
            state, 5, [&] { return log(line); }, {"in lines", [&] { return log(lines); }, Aim::TimesItsTime, 20});
    state.SetBytesProcessed(static_cast<std::int64_t>(line.size()));
}

BENCHMARK(LogOneLongLine)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
