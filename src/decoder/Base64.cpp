#include "decoder/Base64.h"

#include "base/Text.h"
#include "decoder/SixBit.h"

#include <algorithm>
#include <functional>

// base64, RFC 4648, in the two wrappings that articles have it in.
//
// A successor of uuencode, published with it by POSIX, says so on its begin line and ends with four equals signs:
//
//   begin-base64 644 picture.jpg
//   /9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAgGBgcGBQgHBwcJCQgKDBQNDAsL
//   ...
//   hGM=
//   ====
//
// A part of a MIME multipart (RFC 2045, 6.8) goes on to the next boundary line, and nothing else shows its end. Its
// lines have 76 characters at most in theory; in practice there are parts that are one single line, so lines play no
// role here but for speed: what counts is the stream of characters. Blanks and line ends in it mean nothing. RFC 2045
// would have any other character passed over as well, but in an article it is a sign of damage and taken as that, and
// so is a text that does not come to an even end, with "=" or "==" where the last group needs it.

namespace {

constexpr auto alphabet = SixBitAlphabet::Base64;

constexpr std::string_view lineSpace = " \t\r";

bool IsLineSpace(char character) { return lineSpace.find(character) != std::string_view::npos; }

// The stream of characters, cut anywhere.
class Base64Stream {
public:
    explicit Base64Stream(AttachmentWriter& attachmentWriter)
        : writer(attachmentWriter)
    {
    }

    // False at a character that cannot stand there.
    bool Take(std::string_view text)
    {
        if (held == 0 && padding == 0)
            TakeGroups(text);
        return std::all_of(text.begin(), text.end(), [this](char character) { return Take(character); });
    }

    bool IsBetweenGroups() const { return held == 0 && padding == 0; }

    // Nothing is missing of the last group.
    bool IsComplete() const { return held == 0; }

private:
    void TakeGroups(std::string_view& text)
    {
        while (text.size() >= 4) {
            const std::size_t groups = std::min(text.size() / 4, AttachmentWriter::largestReserve / 3);
            if (DecodeGroups(alphabet, text.data(), groups, writer.Reserve(3 * groups)).foreign)
                return;
            writer.Add(3 * groups);
            text.remove_prefix(4 * groups);
        }
    }

    bool Take(char character)
    {
        if (IsLineSpace(character))
            return true;
        if (character == '=') {
            if (held < 2 || ++padding + held > 4)
                return false;
            if (padding + held == 4)
                Finish();
            return true;
        }
        if (padding != 0 || SixBitValue(alphabet, character) < 0)
            return false;
        group[held++] = character;
        if (held == 4)
            Finish();
        return true;
    }

    void Finish()
    {
        std::fill(group + held, group + 4, 'A');
        (void)DecodeGroups(alphabet, group, 1, writer.Reserve(3)); // known to be in the alphabet
        writer.Add(held - 1);
        held = 0;
    }

    AttachmentWriter& writer;
    char group[4] = {};
    std::size_t held = 0; // characters of a group that has begun
    std::size_t padding = 0; // after which nothing may follow
};

enum class End { No, Whole, CutOff };

Outcome DecodeUntil(const std::function<End(std::string_view line)>& endOf, LineReader& lines, std::string_view name,
    AttachmentSink& sink)
{
    AttachmentWriter writer(sink, name);
    Base64Stream stream(writer);
    while (lines.HasLine()) {
        const std::string_view text = lines.Line();
        switch (lines.IsWhole() ? endOf(text) : End::No) {
        case End::Whole:
            return stream.IsComplete() ? writer.Keep() : Outcome::Damaged;
        case End::CutOff:
            return Outcome::Part;
        case End::No:
            break;
        }
        if (!stream.Take(text))
            return Outcome::Damaged;

        const bool isFull = lines.IsWhole() && text.size() % 4 == 0 && stream.IsBetweenGroups();
        const LineShape shape{0, text.size() / 4, false, lines.LineEndSize()};
        lines.Advance();
        if (isFull) { // the lines after it most likely look the same
            bool backtickSeen = false;
            lines.Skip(DecodeLines(alphabet, shape, lines.Ahead(), writer, backtickSeen));
        }
    }
    return Outcome::Part;
}

bool LooksLikeBase64(std::string_view line)
{
    return std::all_of(line.begin(), line.end(), [](char character) {
        return SixBitValue(alphabet, character) >= 0 || character == '=' || IsLineSpace(character);
    });
}

}

Outcome DecodeBeginBase64(
    LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink)
{
    const auto isBlank = [](std::string_view line) { return std::all_of(line.begin(), line.end(), IsLineSpace); };
    while (lines.HasLine() && isBlank(lines.Line()))
        lines.Advance();
    if (!lines.HasLine() || !LooksLikeBase64(lines.Line()))
        return Outcome::None;
    return DecodeUntil(
        [&](std::string_view line) {
            return TrimEnd(line, lineSpace) == "====" ? End::Whole : boundaries.EndsPart(line) ? End::CutOff : End::No;
        },
        lines, name, sink);
}

Outcome DecodeBase64Part(
    LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink)
{
    return DecodeUntil(
        [&](std::string_view line) { return boundaries.EndsPart(line) ? End::Whole : End::No; }, lines, name, sink);
}

std::string DecodeBase64Text(std::string_view text)
{
    std::string characters(text);
    std::erase_if(characters, [](char character) { return SixBitValue(alphabet, character) < 0; });
    const std::size_t size = characters.size() * 6 / 8;
    characters.resize((characters.size() + 3) / 4 * 4, 'A');
    std::string bytes(characters.size() + AttachmentWriter::slack, '\0');
    (void)DecodeGroups(alphabet, characters.data(), characters.size() / 4, bytes.data());
    bytes.resize(size);
    return bytes;
}
