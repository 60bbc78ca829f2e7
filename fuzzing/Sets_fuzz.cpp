#include "decoder/AttachmentDecoder.h"
#include "demo/sample/Encoders.h"
#include "demo/support/TemporaryFolder.h"
#include "fuzzing/CameToSomething.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

// A series of bodies into one destination, with the program started anew, and the files of the sets spoilt, in between.
// Four bytes of the input make one step. After each of them, whatever lies there under a visible name is an attachment
// that was posted whole.

namespace fs = std::filesystem;

namespace {

struct Posting {
    std::string name;
    std::string bytes;
    std::size_t parts;
};

std::string Filling(std::size_t size, char first)
{
    std::string bytes(size, first);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(first + static_cast<char>(i * i));
    return bytes;
}

// Two of one name and size, and one of them again in other parts.
const std::array<Posting, 4> postings{Posting{"a.bin", Filling(100, 'a'), 3}, Posting{"a.bin", Filling(100, 'b'), 3},
    Posting{"a.bin", Filling(100, 'a'), 4}, Posting{"../c.bin", Filling(61, 'c'), 2}};

// Without the attachment's check sum nothing would tell the two apart.
std::string PartOf(const Posting& posting, std::size_t number, unsigned dialect)
{
    const std::size_t size = (posting.bytes.size() + posting.parts - 1) / posting.parts;
    YencDialect yenc{.part = number + 1, .total = (dialect & 1) != 0 ? 0 : posting.parts, .partFirst = number * size};
    yenc.whole = posting.bytes;
    std::string body
        = DotStuff(Yencode(std::string_view(posting.bytes).substr(yenc.partFirst, size), posting.name, yenc));
    if ((dialect & 2) != 0)
        body.erase(body.find(" pcrc32="), 16);
    return body;
}

void SpoilFile(const std::string& path, unsigned how, std::size_t place)
{
    constexpr std::uintmax_t most = 1 << 20; // a place that was changed can be far behind
    std::string bytes = fs::file_size(path) > most ? std::string() : ContentOf(path);
    if (how % 4 == 0 || bytes.empty()) {
        fs::remove(path);
        return;
    }
    place %= bytes.size();
    if (how % 4 == 1)
        bytes.resize(place);
    else if (how % 4 == 2)
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << how / 4 % 8));
    else
        bytes += bytes.substr(place);
    MakeFile(path, bytes);
}

void CheckFiles(const std::string& folder, const std::string& body)
{
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path() == body || entry.path().filename() == ".tamarack-parts")
            continue;
        const std::string content = ContentOf(entry.path());
        const auto isIt = [&content](const Posting& posting) { return posting.bytes == content; };
        if (entry.path().filename().native().starts_with('.') || std::none_of(postings.begin(), postings.end(), isIt))
            std::abort();
    }
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const TemporaryFolder folder;
    const std::string body = folder.File("body");
    const std::string parts = folder.File(".tamarack-parts");
    AttachmentDecoder decoder;
    constexpr std::size_t mostSteps = 64;
    for (std::size_t step = 0; step < mostSteps && size >= 4; ++step, bytes += 4, size -= 4) {
        const std::uint8_t kind = bytes[0] % 8;
        const Posting& posting = postings[bytes[1] % postings.size()];
        std::string text = PartOf(posting, bytes[2] % posting.parts, bytes[3]);
        if (kind == 4) // before the check sum
            text[(bytes[2] / posting.parts + bytes[3] / 4U * 5U) % (text.size() - 20)]
                = static_cast<char>(bytes[0] / 8);
        if (kind == 5)
            text += PartOf(posting, (bytes[2] + 1U) % posting.parts, bytes[3] / 4U);
        if (kind == 6)
            decoder = AttachmentDecoder();
        const std::vector<std::string> files = FilesBelow(parts);
        if (kind == 7 && !files.empty())
            SpoilFile(parts + "/" + files[bytes[1] % files.size()], bytes[2], bytes[3]);
        if (kind < 6) {
            MakeFile(body, text);
            decoder.SetDecodeFilename(body);
            if ((decoder.DecodeStatus() > 0) == decoder.StoredNames().empty())
                std::abort();
            cameToSomething = cameToSomething || decoder.DecodeStatus() > 0;
        }
        CheckFiles(folder.Path(), body);
    }
    for (const auto& entry : fs::directory_iterator(folder.Path()))
        fs::remove_all(entry.path());
    return 0;
}
