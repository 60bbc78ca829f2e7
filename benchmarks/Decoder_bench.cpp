#include "decoder/AttachmentDecoder.h"
#include "decoder/BodyDecoder.h"
#include "support/Encoders.h"

#include <benchmark/benchmark.h>

#define PROTOTYPES // without it, the header declares its functions without their parameters
#include <uudeview.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

// The decoder beside memcpy and beside the library libuu, on the same input in the same run. `bytes_per_second` counts
// encoded bytes, those of the body, in every row: the memcpy rows copy a whole body. An aim of 0.4 of memcpy, say, is a
// row's figure divided by that of the memcpy row of its format.

namespace {

constexpr std::size_t AttachmentSize = 24 * 1024 * 1024;

enum Format : int { UuencodeFormat, YencFormat, Base64Format, FormatCount };

constexpr const char* FormatNames[FormatCount] = {"uuencode", "yEnc", "base64"};

const std::string& Attachment()
{
    static const std::string bytes = [] {
        std::mt19937 random(7);
        std::string text(AttachmentSize, '\0');
        for (char& byte : text)
            byte = static_cast<char>(random());
        return text;
    }();
    return bytes;
}

const std::string& Body(int format)
{
    static const std::vector<std::string> bodies{DotStuff("\r\n" + Uuencode(Attachment(), "attachment.bin")),
        DotStuff("\r\n" + Yencode(Attachment(), "attachment.bin", {.escapeLeadingDots = true})),
        DotStuff("\r\n" + MimeMultipart({MimeBase64Part(Attachment(), "attachment.bin")}))};
    return bodies[static_cast<std::size_t>(format)];
}

// Copies each piece to where it belongs, as anything that has a use for the bytes would have to.
class MemorySink : public AttachmentSink {
public:
    explicit MemorySink(std::string& memory)
        : bytes(memory)
    {
    }

    void Open(std::string_view) override { size = 0; }
    void Write(std::string_view piece) override
    {
        std::memcpy(bytes.data() + size, piece.data(), piece.size());
        size += piece.size();
    }
    [[nodiscard]] bool Keep() override { return true; }
    void Drop() override { size = 0; }

    std::size_t size = 0;

private:
    std::string& bytes;
};

void Report(benchmark::State& state)
{
    const int format = static_cast<int>(state.range(0));
    state.SetLabel(FormatNames[format]);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Body(format).size()));
}

void Memcpy(benchmark::State& state)
{
    const std::string& body = Body(static_cast<int>(state.range(0)));
    std::string copy(body.size(), '\0');
    for (auto _ : state) {
        std::memcpy(copy.data(), body.data(), body.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    Report(state);
}

void DecodeInMemory(benchmark::State& state)
{
    const std::string& body = Body(static_cast<int>(state.range(0)));
    std::string bytes(AttachmentSize + 1024 * 1024, '\0');
    MemorySink sink(bytes);
    for (auto _ : state) {
        LineReader lines{std::string_view(body)};
        if (DecodeBody(lines, sink) != Outcome::Stored || sink.size != AttachmentSize) {
            state.SkipWithError("not decoded");
            break;
        }
        benchmark::ClobberMemory();
    }
    if (std::memcmp(bytes.data(), Attachment().data(), AttachmentSize) != 0)
        state.SkipWithError("decoded to something else");
    Report(state);
}

// A folder with one body in it.
class BodyFolder {
public:
    explicit BodyFolder(const std::string& body)
    {
        char name[] = "/tmp/tamarack-bench-XXXXXX";
        folder = mkdtemp(name);
        std::ofstream(BodyPath(), std::ios::binary) << body;
    }
    ~BodyFolder()
    {
        std::error_code ignored; // the folder is in /tmp
        std::filesystem::remove_all(folder, ignored);
    }
    BodyFolder(const BodyFolder&) = delete;
    BodyFolder& operator=(const BodyFolder&) = delete;

    std::string BodyPath() const { return folder + "/article1.uue"; }
    std::string AttachmentPath() const { return folder + "/attachment.bin"; }

private:
    std::string folder;
};

void DecodeFile(benchmark::State& state)
{
    const BodyFolder folder(Body(static_cast<int>(state.range(0))));
    AttachmentDecoder decoder;
    for (auto _ : state) {
        decoder.SetDecodeFilename(folder.BodyPath());
        if (decoder.DecodeStatus() != 1) {
            state.SkipWithError("not decoded");
            break;
        }
        state.PauseTiming();
        std::filesystem::remove(folder.AttachmentPath());
        state.ResumeTiming();
    }
    Report(state);
}

void DecodeFileByLibuu(benchmark::State& state)
{
    const BodyFolder folder(Body(static_cast<int>(state.range(0))));
    std::string source = folder.BodyPath();
    std::string target = folder.AttachmentPath();
    for (auto _ : state) {
        UUInitialize();
        UUSetOption(UUOPT_FAST, 1, nullptr);
        int result = UULoadFile(source.data(), nullptr, 0);
        uulist* const item = UUGetFileListItem(0);
        if (result == UURET_OK && item != nullptr)
            result = UUDecodeFile(item, target.data());
        UUCleanUp();
        if (result != UURET_OK || item == nullptr || std::filesystem::file_size(target) != AttachmentSize) {
            state.SkipWithError("not decoded");
            break;
        }
        state.PauseTiming();
        std::filesystem::remove(target);
        state.ResumeTiming();
    }
    Report(state);
}

BENCHMARK(Memcpy)->DenseRange(0, FormatCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeInMemory)->DenseRange(0, FormatCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeFile)->DenseRange(0, FormatCount - 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(DecodeFileByLibuu)->DenseRange(0, FormatCount - 1)->Unit(benchmark::kMillisecond)->UseRealTime();

}
