#include "benchmarks/SideBySide.h"
#include "decoder/AttachmentDecoder.h"
#include "decoder/BodyDecoder.h"
#include "decoder/Processor.h"
#include "demo/sample/Encoders.h"
#include "demo/support/TemporaryFolder.h"

#define PROTOTYPES // without it, the header declares its functions without their parameters
#include <uudeview.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

// The decoder beside memcpy and beside the library libuu, on the same body of each kind. Rates count the bytes of the
// body. The body is made so that no line of it begins with a dot: libuu leaves dots doubled.

namespace {

constexpr std::size_t attachmentSize = 24 * 1024 * 1024;
constexpr int memoryRounds = 25;
constexpr int fileRounds = 7;

struct Format {
    const char* name;
    double shareOfMemcpy; // aimed at
    std::string (*encode)(std::string_view bytes);
};

const Format formats[] = {
    {"uuencode", 0.4, [](std::string_view bytes) { return Uuencode(bytes, "attachment.bin"); }},
    {"yEnc", 0.4, [](std::string_view bytes) { return Yencode(bytes, "attachment.bin", {.escapeLeadingDots = true}); }},
    {"base64", 0.4, [](std::string_view bytes) { return MimeMultipart({MimeBase64Part(bytes, "attachment.bin")}); }},
};

const std::string& Attachment()
{
    static const std::string bytes = [] {
        std::mt19937 random(7);
        std::string text(attachmentSize, '\0');
        std::generate(text.begin(), text.end(), [&random] { return static_cast<char>(random()); });
        return text;
    }();
    return bytes;
}

// Copies each piece to where it belongs, as anything that has a use for the bytes would have to.
class MemorySink : public AttachmentSink {
public:
    void Open(std::string_view, const std::optional<AttachmentPart>&) override { size = 0; }
    void Write(std::string_view piece) override
    {
        std::memcpy(bytes.data() + size, piece.data(), std::min(piece.size(), bytes.size() - size));
        size += piece.size();
    }
    Outcome Keep(const std::optional<AttachmentPart>&) override { return Outcome::Stored; }
    void Drop() override { size = 0; }

    bool HoldsAttachment() const { return size == attachmentSize && bytes == Attachment(); }

private:
    std::string bytes = std::string(attachmentSize, '\0');
    std::size_t size = 0;
};

void DecodeInMemory(benchmark::State& state, const Format& format, Processor::Vectors vectors)
{
    Processor::Limit(vectors);
    const std::string body = "\r\n" + format.encode(Attachment());
    std::string copy(body.size(), '\0');
    MemorySink sink;
    const auto decode = [&] {
        const auto taken = Timed([&] {
            LineReader lines{std::string_view(body)};
            return DecodeBody(lines, sink) == Outcome::Stored;
        });
        return sink.HoldsAttachment() ? taken : std::nullopt;
    };
    const auto copyBody = [&] {
        return Timed([&] {
            std::memcpy(copy.data(), body.data(), body.size());
            benchmark::DoNotOptimize(copy.data());
            benchmark::ClobberMemory();
            return true;
        });
    };
    for (auto _ : state)
        CompareSideBySide(state, memoryRounds, decode, {"memcpy", copyBody, Aim::OfItsSpeed, format.shareOfMemcpy});
    state.SetBytesProcessed(static_cast<std::int64_t>(body.size()));
    Processor::Limit(Processor::Vectors::Avx512);
}

bool DecodeByLibuu(std::string source, std::string target)
{
    UUInitialize();
    UUSetOption(UUOPT_FAST, 1, nullptr); // it need not look for more than one attachment
    int result = UULoadFile(source.data(), nullptr, 0);
    uulist* const attachment = UUGetFileListItem(0);
    if (result == UURET_OK && attachment != nullptr)
        result = UUDecodeFile(attachment, target.data());
    UUCleanUp();
    return result == UURET_OK && attachment != nullptr;
}

void DecodeFile(benchmark::State& state, const Format& format)
{
    const TemporaryFolder folder;
    const std::string body = "\r\n" + format.encode(Attachment());
    const std::string source = folder.File("article1.uue");
    const std::string target = folder.File("attachment.bin");
    if (!MakeFile(source, body)) {
        state.SkipWithError("no room for the body");
        return;
    }
    const auto checked = [&](const std::function<bool()>& decode) -> std::optional<double> {
        const auto taken = Timed(decode);
        const bool isRight = ContentOf(target) == Attachment();
        std::remove(target.c_str());
        return isRight ? taken : std::nullopt;
    };
    AttachmentDecoder decoder;
    const auto decodeByOurs = [&] {
        decoder.SetDecodeFilename(source);
        return decoder.DecodeStatus() == 1;
    };
    for (auto _ : state) {
        CompareSideBySide(state, fileRounds, [&] { return checked(decodeByOurs); },
            {"libuu", [&] { return checked([&] { return DecodeByLibuu(source, target); }); }, Aim::OfItsSpeed, 15});
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(body.size()));
}

// From file to file.
void DecoderGrowth(benchmark::State& state, const Format& format)
{
    const TemporaryFolder folder;
    const auto decode = [&](std::size_t size) {
        const std::string source = folder.File(std::to_string(size));
        if (!std::filesystem::exists(source))
            MakeFile(source, "\r\n" + format.encode(std::string_view(Attachment()).substr(0, size)));
        AttachmentDecoder decoder;
        const auto taken = Timed([&] {
            decoder.SetDecodeFilename(source);
            return decoder.DecodeStatus() == 1;
        });
        std::remove(folder.File("attachment.bin").c_str());
        return taken;
    };
    for (auto _ : state)
        CompareWithATenth(
            state, fileRounds, [&] { return decode(attachmentSize); }, [&] { return decode(attachmentSize / 10); });
}

void DecodeInMemoryByAll(benchmark::State& state, const Format& format)
{
    DecodeInMemory(state, format, Processor::Vectors::Avx512);
}

// As on the many processors that have nothing newer.
void DecodeInMemoryByAvx2(benchmark::State& state, const Format& format)
{
    DecodeInMemory(state, format, Processor::Vectors::Avx2);
}

const bool registered = [] {
    using Measurement = void (*)(benchmark::State&, const Format&);
    const std::pair<const char*, Measurement> measurements[]
        = {{"DecodeInMemory/", DecodeInMemoryByAll}, {"DecodeInMemoryByAvx2/", DecodeInMemoryByAvx2},
            {"DecodeFile/", DecodeFile}, {"DecoderGrowth/", DecoderGrowth}};
    for (const auto& [name, measure] : measurements) {
        for (const Format& format : formats) {
            benchmark::RegisterBenchmark((std::string(name) + format.name).c_str(),
                [measure = measure, &format](benchmark::State& state) { measure(state, format); })
                ->Iterations(1)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

}
