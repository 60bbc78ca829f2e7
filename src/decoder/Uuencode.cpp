#include "decoder/Uuencode.h"

#include "base/Text.h"
#include "decoder/SixBit.h"

#include <algorithm>

// uuencode, as POSIX publishes it under the utility of that name:
//
//   begin 644 picture.jpg
//   M_]C_X``02D9)1@`!`0```0`!``#_VP!#``@&!@<&!0@'!P<)"0@*#!0-#`L+
//   ...
//   #86)C
//   `
//   end
//
// The first character of a line is the number of bytes in it, 32 added, and four characters each give three bytes. A
// line of no bytes and "end" close the attachment. Encoders have taken liberties, and so have the gateways between:
//
// - Zero is the blank in the oldest encoders and the backtick in later ones, which were made because blanks at the end
//   of a line got lost on the way. Both are read, and with the first kind lost blanks are put back. That is not done
//   once a backtick has been seen: then the blanks were never there, and the line has been cut.
// - The last group may be as short as its bytes allow, two characters for one byte.
// - One character more at the end of a line is a check character or a line mark, of which there are several kinds.
//   It is not looked at. Blanks at the end of a line mean nothing.
// - The line of no bytes may be a backtick, a blank, an empty line, or missing. Empty lines may stand anywhere.
// - The mode has three or four octal digits. It is not used. The name may hold blanks and may be in quotes.

namespace {

constexpr auto alphabet = SixBitAlphabet::Uuencode;
constexpr char fullLine = 'M';

bool IsEndLine(std::string_view line) { return TrimEnd(line) == "end"; }

struct UuencodeLine {
    std::size_t bytes = 0; // 0 to 63
    std::string_view characters; // at most as many as the bytes need
    bool blanksLost = false;
    bool oneMore = false;
};

// Nothing if the line is none of uuencode.
std::optional<UuencodeLine> ReadUuencodeLine(std::string_view text)
{
    if (text.empty() || SixBitValue(alphabet, text.front()) < 0)
        return std::nullopt;
    UuencodeLine line;
    line.bytes = static_cast<std::size_t>(SixBitValue(alphabet, text.front()));
    text.remove_prefix(1);
    const std::size_t needed = (line.bytes + 2) / 3 * 4;
    line.characters = text.substr(0, needed);
    line.blanksLost = text.size() < (line.bytes * 8 + 5) / 6;
    if (text.size() > needed) {
        const std::string_view rest = TrimEnd(text.substr(needed));
        if (rest.size() > 1)
            return std::nullopt;
        line.oneMore = text.size() == needed + 1;
    }
    const auto foreign = [](char character) { return SixBitValue(alphabet, character) < 0; };
    if (std::any_of(line.characters.begin(), line.characters.end(), foreign))
        return std::nullopt;
    return line;
}

void WriteBytes(const UuencodeLine& line, AttachmentWriter& writer)
{
    char characters[64 / 3 * 4 + 4];
    char* const restored = std::copy(line.characters.begin(), line.characters.end(), std::begin(characters));
    std::fill(restored, std::end(characters), ' ');
    (void)DecodeGroups(alphabet, characters, (line.bytes + 2) / 3, writer.Reserve(66)); // known to be in the alphabet
    writer.Add(line.bytes);
}

}

std::optional<std::string> NameInBeginLine(std::string_view line, std::string_view keyword)
{
    const auto skipBlanks = [&line] {
        const std::size_t count = std::min(line.find_first_not_of(" \t"), line.size());
        line.remove_prefix(count);
        return count != 0;
    };
    if (!line.starts_with(keyword))
        return std::nullopt;
    line.remove_prefix(keyword.size());
    if (!skipBlanks())
        return std::nullopt;
    const std::size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
    line.remove_prefix(digits);
    if (digits < 3 || digits > 4 || !skipBlanks())
        return std::nullopt;
    line = TrimEnd(line);
    return line.empty() ? std::nullopt : std::optional<std::string>(line);
}

bool IsFullUuencodeLine(std::string_view line)
{
    if (!line.starts_with(fullLine))
        return false;
    const auto read = ReadUuencodeLine(line);
    return read && !read->blanksLost;
}

Outcome DecodeUuencode(LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink)
{
    const auto isBlank = [](std::string_view line) { return TrimEnd(line).empty(); };
    while (lines.HasLine() && isBlank(lines.Line()))
        lines.Advance();
    if (!lines.HasLine() || !lines.IsWhole() || (!IsEndLine(lines.Line()) && !ReadUuencodeLine(lines.Line())))
        return Outcome::None;

    AttachmentWriter writer(sink, name);
    bool backtickSeen = false;
    bool blanksLost = false;
    bool closed = false; // by the line of no bytes
    while (lines.HasLine()) {
        const std::string_view text = lines.Line();
        if (IsEndLine(text)) {
            lines.Advance();
            return writer.Keep();
        }
        if (isBlank(text)) {
            lines.Advance();
            continue;
        }
        if (boundaries.EndsPart(text))
            return Outcome::Part;
        const auto line = lines.IsWhole() ? ReadUuencodeLine(text) : std::nullopt;
        if (!line || closed)
            return Outcome::Damaged;
        closed = line->bytes == 0;
        blanksLost = blanksLost || line->blanksLost;
        backtickSeen = backtickSeen || line->characters.find('`') != std::string_view::npos;
        if (blanksLost && backtickSeen)
            return Outcome::Damaged;
        WriteBytes(*line, writer);

        const LineShape shape{text.front(), line->bytes / 3, line->oneMore, lines.LineEndSize()};
        const bool isFull = line->bytes % 3 == 0 && line->characters.size() == 4 * shape.groups;
        lines.Advance();
        if (isFull) { // the lines after it most likely look the same
            lines.Skip(DecodeLines(alphabet, shape, lines.Ahead(), writer, backtickSeen));
            if (blanksLost && backtickSeen)
                return Outcome::Damaged;
        }
    }
    return Outcome::Part;
}
