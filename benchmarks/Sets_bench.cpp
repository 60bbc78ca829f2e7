#include "benchmarks/SideBySide.h"
#include "decoder/AttachmentDecoder.h"
#include "demo/sample/Encoders.h"
#include "demo/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

// Attachments that are spread over several articles, from body files to the finished one.

namespace {

namespace fs = std::filesystem;

constexpr std::size_t attachmentSize = 100'000'000;
constexpr std::size_t partCount = 140;
constexpr int openSets = 1000;
constexpr int rounds = 7;

double ResidentBytes()
{
    double size = 0;
    double resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

std::string RandomBytes(std::size_t size)
{
    std::mt19937 random(7);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
    return bytes;
}

bool Decode(AttachmentDecoder& decoder, const std::string& body, int status)
{
    decoder.SetDecodeFilename(body);
    return decoder.DecodeStatus() == status;
}

// Sets of which one part is there, and the bodies that brought it.
std::vector<std::string> OpenSets(const TemporaryFolder& folder, AttachmentDecoder& decoder, int count)
{
    std::vector<std::string> bodies;
    for (int number = 0; number < count; ++number) {
        bodies.push_back(folder.File("article" + std::to_string(number) + ".uue"));
        MakeFile(bodies.back(), YencodeParts(std::string(20'000, 'k'), std::to_string(number) + ".bin", 2).front());
        Decode(decoder, bodies.back(), -1);
    }
    return bodies;
}

// In front of the others, so that no memory of theirs is used again.
void MemoryOfOpenSets(benchmark::State& state)
{
    const TemporaryFolder folder;
    AttachmentDecoder first;
    OpenSets(folder, first, 1);
    for (auto _ : state) {
        const double before = ResidentBytes();
        AttachmentDecoder decoder;
        OpenSets(folder, decoder, openSets);
        const WaitingSets waiting = decoder.Waiting(folder.Path());
        if (waiting.attachments != openSets)
            state.SkipWithError("not all of them are open");
        char label[80];
        std::snprintf(
            label, sizeof label, "%.1f MB for %d open sets (aim under 10)", (ResidentBytes() - before) / 1e6, openSets);
        state.SetLabel(label);
    }
}
BENCHMARK(MemoryOfOpenSets)->Iterations(1)->Unit(benchmark::kMillisecond);

void JoinParts(benchmark::State& state)
{
    const TemporaryFolder folder;
    const std::string bytes = RandomBytes(attachmentSize);
    std::vector<std::string> bodies;
    for (const std::string& part : YencodeParts(bytes, "a.bin", partCount, {.escapeLeadingDots = true, .total = 1})) {
        bodies.push_back(folder.File("article" + std::to_string(bodies.size()) + ".uue"));
        MakeFile(bodies.back(), part);
    }
    sync(); // what the bodies cost the disk is not to be paid in the first round
    std::shuffle(bodies.begin(), bodies.end(), std::mt19937(3));
    const std::string joined = folder.File("a.bin");
    const auto join = [&] {
        AttachmentDecoder decoder;
        const double before = ResidentBytes();
        const auto taken = Timed([&] {
            for (const std::string& body : bodies) {
                if (!Decode(decoder, body, &body == &bodies.back() ? 1 : -1))
                    return false;
            }
            return true;
        });
        const bool isRight = ResidentBytes() - before < 5e6 && ContentOf(joined) == bytes;
        fs::remove(joined);
        return isRight ? taken : std::nullopt;
    };
    const auto write = [&] {
        constexpr std::size_t blockSize = 256 * 1024;
        const auto taken = Timed([&] {
            const int file = open(joined.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
            bool written = true;
            for (std::size_t at = 0; at < bytes.size(); at += blockSize) {
                const std::size_t size = std::min(blockSize, bytes.size() - at);
                written = pwrite(file, bytes.data() + at, size, static_cast<off_t>(at)) == static_cast<ssize_t>(size)
                    && written;
            }
            written = fdatasync(file) == 0 && written;
            return close(file) == 0 && written;
        });
        fs::remove(joined);
        return taken;
    };
    for (auto _ : state)
        CompareSideBySide(state, rounds, join, {"pwrite and fdatasync", write, Aim::OfItsSpeed, 0.5});
    state.SetBytesProcessed(attachmentSize);
}
BENCHMARK(JoinParts)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// Parts that have come before, with so many sets open: they are found and compared, and nothing is written to the disk.
void FindSet(benchmark::State& state)
{
    struct Open {
        explicit Open(int count)
            : bodies(OpenSets(folder, decoder, count))
        {
        }
        std::optional<double> Find()
        {
            return Timed([this] {
                return std::all_of(bodies.end() - 100, bodies.end(),
                    [this](const std::string& body) { return Decode(decoder, body, -1); });
            });
        }
        const TemporaryFolder folder;
        AttachmentDecoder decoder;
        const std::vector<std::string> bodies;
    };
    Open many(openSets);
    Open few(openSets / 10);
    for (auto _ : state)
        CompareSideBySide(state, 25, [&] { return many.Find(); },
            {"with a tenth of the sets", [&] { return few.Find(); }, Aim::TimesItsTime, 1.5});
}
BENCHMARK(FindSet)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
