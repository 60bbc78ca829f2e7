#include "benchmarks/ProgramInFolder.h"
#include "benchmarks/ServerProcess.h"
#include "benchmarks/SideBySide.h"
#include "demo/sample/Encoders.h"
#include "demo/support/InterNetNews.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// The search of a group beside a bare client that sends the same commands to the same server in the same order and
// writes each body and each attachment to a file. It brings the attachment to the disk, as whoever counts the article
// as read has to. It does not decode: it has the attachments already. The server runs in processes of its own.

namespace {

const std::string group = "alt.kites";
const std::string smallGroup = "alt.kites.few"; // with a tenth of the articles
constexpr int articleCount = 2000; // behind the first, up to which the group has been read
constexpr int rounds = 7;

constexpr std::size_t attachmentSize = 480 * 45; // 30 KB as a body

std::string_view Attachment(int number)
{
    static const std::string bytes = [] {
        std::mt19937 random(7);
        std::string text(attachmentSize + articleCount + 2, '\0');
        for (char& byte : text)
            byte = static_cast<char>(random());
        return text;
    }();
    return std::string_view(bytes).substr(static_cast<std::size_t>(number), attachmentSize);
}

std::string AttachmentName(int number) { return "kite-" + std::to_string(number) + ".jpg"; }

std::string Body(int number) { return Uuencode(Attachment(number), AttachmentName(number)); }

SampleGroups Articles()
{
    std::vector<std::string> bodies;
    for (int number = 2; number <= articleCount + 1; ++number)
        bodies.push_back(Body(number));
    const std::vector<std::string> tenth(bodies.begin(), bodies.begin() + articleCount / 10);
    return {GroupOf(group, 1, bodies), GroupOf(smallGroup, 1, tenth)};
}

bool WriteFile(const std::string& path, std::string_view bytes, bool toTheDisk)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const ssize_t written = write(file, bytes.data(), bytes.size());
    const bool isThere = !toTheDisk || fdatasync(file) == 0;
    return close(file) == 0 && isThere && written == static_cast<ssize_t>(bytes.size());
}

bool SearchByBareClient(std::uint16_t port, Wire wire, const TemporaryFolder& folder)
{
    NewsClient client(port, wire);
    if (!client.Command("group " + group).starts_with("211 ") || !client.Command("stat 1").starts_with("223 "))
        return false;
    int stored = 0;
    for (;;) {
        int number = 0;
        if (std::sscanf(std::string(client.Command("next")).c_str(), "223 %d", &number) != 1)
            return stored == articleCount;
        const std::string article = std::to_string(number);
        if (client.Text("head " + article).empty())
            return false;
        const std::string_view body = client.Text("body " + article);
        if (body.empty() || !WriteFile(folder.File("article" + article + ".uue"), body, false)
            || !WriteFile(folder.File(AttachmentName(number)), Attachment(number), true))
            return false;
        ++stored;
    }
}

std::optional<double> RunBareClient(std::uint16_t port, Wire wire)
{
    const TemporaryFolder folder;
    return Timed([&] { return SearchByBareClient(port, wire, folder); });
}

std::optional<double> RunProgram(
    std::uint16_t port, Wire wire = Wire::Plain, const std::string& searched = group, int count = articleCount)
{
    ProgramInFolder program(port, searched, wire);
    const std::optional<double> time = Timed([&] { return program.Search(count); });
    for (int number = 2; number <= count + 1; ++number) {
        if (ContentOf(program.GroupDirectory() + AttachmentName(number)) != Attachment(number))
            return std::nullopt;
    }
    return time;
}

void Compare(benchmark::State& state, std::uint16_t port, Wire wire = Wire::Plain, double limit = 1.5)
{
    for (auto _ : state)
        CompareSideBySide(state, rounds, [=] { return RunProgram(port, wire); },
            {"bare client", [=] { return RunBareClient(port, wire); }, Aim::TimesItsTime, limit});
    state.SetItemsProcessed(articleCount);
}

void ScanOnSampleServer(benchmark::State& state)
{
    const ServerProcess server(Articles);
    Compare(state, server.Port());
}

void ScanEncrypted(benchmark::State& state)
{
    const ServerProcess server(Articles);
    Compare(state, server.SecurePort(), Wire::Encrypted, 1.2);
}

// Others that need every processor for as long as it lives, as a compiler does.
class BusyProcessors {
public:
    BusyProcessors()
    {
        for (unsigned count = std::thread::hardware_concurrency(); count > 0; --count) {
            others.push_back(fork());
            if (others.back() == 0) {
                prctl(PR_SET_PDEATHSIG, SIGKILL);
                for (;;)
                    benchmark::DoNotOptimize(this);
            }
        }
    }
    ~BusyProcessors()
    {
        for (const pid_t other : others) {
            if (other > 0) {
                kill(other, SIGKILL);
                waitpid(other, nullptr, 0);
            }
        }
    }
    BusyProcessors(const BusyProcessors&) = delete;
    BusyProcessors& operator=(const BusyProcessors&) = delete;

private:
    std::vector<pid_t> others;
};

void ScanOnBusyMachine(benchmark::State& state)
{
    const ServerProcess server(Articles);
    const BusyProcessors others;
    Compare(state, server.Port());
}

void ScanGrowth(benchmark::State& state)
{
    const ServerProcess server(Articles);
    for (auto _ : state)
        CompareWithATenth(
            state, rounds, [&] { return RunProgram(server.Port()); },
            [&] { return RunProgram(server.Port(), Wire::Plain, smallGroup, articleCount / 10); });
    state.SetItemsProcessed(articleCount);
}

void ScanOnInterNetNews(benchmark::State& state)
{
    std::string obstacle = InterNetNews::Obstacle();
    InterNetNews server;
    if (obstacle.empty())
        obstacle = server.Start({group});
    for (int number = 1; obstacle.empty() && number <= articleCount + 1; ++number) {
        if (const std::string status = server.Post(group, AttachmentName(number) + " (1/1)", Body(number));
            !status.starts_with("240 "))
            obstacle = "the server does not take an article: " + status;
    }
    if (obstacle.empty())
        Compare(state, server.Port());
    else
        state.SkipWithError(("left out: " + obstacle).c_str());
}

BENCHMARK(ScanOnSampleServer)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ScanEncrypted)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ScanOnBusyMachine)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ScanGrowth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ScanOnInterNetNews)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
