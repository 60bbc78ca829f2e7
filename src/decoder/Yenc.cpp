#include "decoder/Yenc.h"

#include "decoder/YencStream.h"

#include <charconv>

// yEnc, version 1.3 of its public draft:
//
//   =ybegin line=128 size=123456 name=picture.jpg
//   ... bytes, in lines of about 128 ...
//   =yend size=123456 crc32=abcdef12
//
// A byte is sent as itself plus 42. Those that would then be NUL, LF, CR or "=" are sent as "=" and the byte plus 106.
// Encoders may do so with others too, such as the blank, the tab and a dot at the start of a line. CR and LF are never
// data. A line that begins with "=y" is one of the format's own.
//
// A posting in several articles has in each of them "part=" on the =ybegin line and a second line
//
//   =ypart begin=1 end=384000
//
// There, the crc32 of the =yend line is that of the whole attachment, and pcrc32 that of the part. (Some encoders have
// no pcrc32 and write the part's as crc32.) An attachment in one article may be written in the same way, as part 1 that
// goes from 1 to its size. A part whose place is not told, without =ypart line, is not decoded.
//
// The check sum is voluntary, and an =yend line without it proves nothing but the size. Values that cannot be read are
// taken for wrong ones. The "line" of =ybegin is of no use to a decoder, and a line may well be a little longer.

namespace {

// The value after " field=" on one of the format's own lines, up to the next blank; nothing if there is no such field.
std::optional<std::string_view> Field(std::string_view line, std::string_view field)
{
    for (std::size_t at = line.find(' '); at != std::string_view::npos; at = line.find(' ', at)) {
        ++at;
        const std::string_view rest = line.substr(at);
        if (rest.starts_with(field) && rest.substr(field.size()).starts_with('=')) {
            const std::string_view value = rest.substr(field.size() + 1);
            return value.substr(0, value.find_first_of(" \t"));
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> ReadNumber(std::string_view text, int base)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return number;
}

std::optional<std::uint64_t> Count(std::string_view line, std::string_view field)
{
    const auto text = Field(line, field);
    return text ? ReadNumber(*text, 10) : std::nullopt;
}

// Nothing if it is not there, or no number. Some encoders take the check sum for a signed number of 64 bits and write
// "ffffffffabcdef12".
std::optional<std::uint32_t> Checksum(std::string_view line, std::string_view field)
{
    const auto text = Field(line, field);
    const auto number = text ? ReadNumber(*text, 16) : std::nullopt;
    if (!number || (*number >> 32 != 0 && *number >> 32 != 0xffffffff))
        return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

bool IsChecksumWrong(std::string_view line, std::string_view field, std::uint32_t checksum)
{
    return Field(line, field) && Checksum(line, field) != checksum;
}

// Is the line "=yend size=123456 crc32=abcdef12" right about what was decoded?
bool IsConfirmed(std::string_view line, std::uint64_t size, std::uint32_t checksum)
{
    return Count(line, "size") == size && !IsChecksumWrong(line, "crc32", checksum)
        && !IsChecksumWrong(line, "pcrc32", checksum);
}

// Adds what the line "=yend size=384000 part=1 pcrc32=12345678 crc32=abcdef12" tells of a part. False if it is not
// right.
bool ConfirmPart(AttachmentPart& part, std::string_view line, const YencBegin& begin, std::uint32_t checksum)
{
    if (Count(line, "size") != part.size || IsChecksumWrong(line, "pcrc32", checksum)
        || (Field(line, "part") && begin.part && Count(line, "part") != begin.part))
        return false;
    part.checksum = checksum;
    part.isProven = Field(line, "pcrc32").has_value();
    part.wholeChecksum = Checksum(line, "crc32");
    if (Field(line, "crc32") && !part.wholeChecksum)
        return false;
    if (part.wholeChecksum == checksum) {
        part.isProven = true;
        part.wholeChecksum.reset();
    }
    return true;
}

// The part that the line "=ypart begin=1 end=384000" tells of; nothing if there is none such.
std::optional<AttachmentPart> ReadPlace(std::string_view line, const YencBegin& begin)
{
    const auto first = Count(line, "begin");
    const auto last = Count(line, "end");
    // The only part of nothing goes from 1 to 0.
    if (!first || !last || *last > begin.size || *first == 0 || (*last < *first && begin.size != 0))
        return std::nullopt;
    if (begin.part == 0U || (begin.total != 0 && begin.part > begin.total))
        return std::nullopt;
    return AttachmentPart{begin.size, begin.total, *first - 1, *last + 1 - *first};
}

}

std::optional<YencBegin> ReadYencBegin(std::string_view line)
{
    // =ybegin line=128 size=123456 name=picture.jpg   (the name goes on to the end of the line, blanks and all)
    constexpr std::string_view nameField = " name=";
    const std::size_t nameAt = line.find(nameField);
    if (!line.starts_with("=ybegin ") || nameAt == std::string_view::npos)
        return std::nullopt;
    const std::string_view fields = line.substr(0, nameAt);
    const auto size = Count(fields, "size");
    if (!size)
        return std::nullopt;
    const auto isMoreThanOne
        = [fields](std::string_view field) { return Field(fields, field).has_value() && Count(fields, field) != 1U; };
    return YencBegin{*size, isMoreThanOne("part") || isMoreThanOne("total"), Count(fields, "part"),
        Count(fields, "total").value_or(0), std::string(line.substr(nameAt + nameField.size()))};
}

Outcome DecodeYenc(LineReader& lines, const YencBegin& begin, AttachmentSink& sink)
{
    std::optional<AttachmentPart> part;
    if (lines.HasLine() && lines.Line().starts_with("=ypart ")) {
        part = ReadPlace(lines.Line(), begin);
        if (!part)
            return Outcome::Damaged;
        lines.Advance();
        if (part->size == begin.size)
            part.reset();
    } else if (begin.isOneOfSeveral) {
        return Outcome::Part;
    }

    const std::uint64_t size = part ? part->size : begin.size;
    AttachmentWriter writer(sink, begin.name, part);
    YencStream stream(writer);
    while (!stream.IsAtOwnLine()) {
        lines.Skip(stream.Take(lines.Ahead()));
        // More than was announced may be without end, and is not to fill the disk.
        const bool isDamaged = stream.IsDamaged() || writer.Size() > size;
        if (isDamaged)
            writer.Abandon();
        if (!stream.IsAtOwnLine() && !lines.ReadMore())
            return isDamaged ? Outcome::Damaged : Outcome::Part;
    }
    if (!lines.HasLine() || !lines.Line().starts_with("=yend"))
        return Outcome::Part; // the next attachment begins before this one has ended
    const std::string_view line = lines.Line();
    const std::uint32_t checksum = stream.Checksum();
    const bool isConfirmed = lines.IsWhole() && !stream.IsDamaged() && writer.Size() == size
        && (part ? ConfirmPart(*part, line, begin, checksum) : IsConfirmed(line, size, checksum));
    lines.Advance();
    return isConfirmed ? writer.Keep(part) : Outcome::Damaged;
}
