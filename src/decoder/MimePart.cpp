#include "decoder/MimePart.h"

#include "base/Text.h"
#include "decoder/Base64.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

// Where a part of a multipart has its file name (RFC 2045, RFC 2183):
//
//   --=_next_part
//   Content-Type: image/jpeg; name="picture.jpg"
//   Content-Transfer-Encoding: base64
//   Content-Disposition: attachment;
//           filename="picture.jpg"
//
// The name of the disposition goes before that of the type. A header line that begins with a blank continues the one
// before. A name beyond ASCII is written in one of four ways, all of which are read:
//
//   filename*=utf-8''gr%C3%BCn.jpg             RFC 2231, 4
//   filename*0="a very long "; filename*1="name.jpg"       RFC 2231, 3; with "*" behind the number as in 4
//   filename="=?utf-8?B?Z3LDvG4uanBn?="        RFC 2047, which does not allow it here, yet many do so
//   filename="grün.jpg"                        the bytes as they are
//
// The character set that goes with them is not used. What is valid UTF-8 is taken for that, as file names are later on.
//
// Parts in quoted-printable, 7bit or 8bit are text to be read, named or not, and no attachments. An attachment inside
// such a text, in uuencode say, is found like anywhere else in a body.

namespace {

constexpr std::size_t longestHeader = 16 * 1024; // of one field; what goes beyond is passed over
constexpr std::size_t mostPieces = 64; // of a name that is cut into pieces

constexpr std::string_view blanks = " \t";

// The length of the field name in "Content-Type: text/plain", 0 if this is no header line.
std::size_t FieldNameLength(std::string_view line)
{
    const std::size_t colon = line.find(':');
    const bool isName = colon != std::string_view::npos
        && std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(colon),
            [](char character) { return character > ' ' && character < 0x7f; });
    return isName ? colon : 0;
}

// =?utf-8?B?Z3LDvG4=?= =?iso-8859-1?Q?gr=FCn?=   (RFC 2047; blanks between two encoded words are not part of the text)
std::string DecodeEncodedWords(std::string_view text)
{
    std::string bytes;
    bool afterWord = false;
    while (!text.empty()) {
        const std::size_t start = text.find("=?");
        const std::string_view plain = text.substr(0, start);
        const std::string_view word = start == std::string_view::npos ? std::string_view() : text.substr(start + 2);
        const std::size_t charsetEnd = word.find('?');
        const std::string_view rest = word.substr(std::min(word.size(), charsetEnd));
        const std::size_t wordEnd = rest.size() > 3 ? rest.find("?=", 3) : std::string_view::npos;
        if (wordEnd == std::string_view::npos || rest[2] != '?') {
            bytes += text;
            break;
        }
        if (!afterWord || !Trim(plain, blanks).empty())
            bytes += plain;
        const std::string_view encoded = rest.substr(3, wordEnd - 3);
        if (LowerCase(rest[1]) == 'b') {
            bytes += DecodeBase64Text(encoded);
        } else {
            std::string blanksRestored(encoded);
            std::replace(blanksRestored.begin(), blanksRestored.end(), '_', ' ');
            bytes += DecodeHex(blanksRestored, '=');
        }
        afterWord = true;
        text = rest.substr(wordEnd + 2);
    }
    return bytes;
}

// One parameter of a header field, `name` as it is written: filename, filename*, filename*0, filename*0*.
struct Parameter {
    std::string_view name;
    std::string value;
};

// Takes the next "; name=value" off the front of `text`.
std::optional<Parameter> TakeParameter(std::string_view& text)
{
    const std::size_t separator = text.find(';');
    if (separator == std::string_view::npos)
        return std::nullopt;
    text.remove_prefix(separator + 1);
    const std::size_t nameEnd = std::min(text.find_first_of("=;"), text.size());
    Parameter parameter{Trim(text.substr(0, nameEnd), blanks), {}};
    text.remove_prefix(nameEnd);
    if (!text.starts_with('='))
        return parameter;
    text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    if (!text.starts_with('"')) {
        const std::size_t valueEnd = std::min(text.find(';'), text.size());
        parameter.value = Trim(text.substr(0, valueEnd), blanks);
        text.remove_prefix(valueEnd);
        return parameter;
    }
    text.remove_prefix(1);
    while (!text.empty() && text.front() != '"') {
        // The backslashes of "C:\pictures\red.jpg" were meant as they are, whatever the RFC says.
        if (text.front() == '\\' && text.size() > 1 && (text[1] == '"' || text[1] == '\\'))
            text.remove_prefix(1);
        parameter.value += text.front();
        text.remove_prefix(1);
    }
    return parameter;
}

// The parts of the field between its semicolons, the first one in front of `text`.
std::string FileNameIn(std::string_view field, std::string_view parameterName)
{
    const auto withoutCharset = [](std::string_view value) {
        // utf-8'en'gr%C3%BCn.jpg
        const std::size_t first = value.find('\'');
        const std::size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
        return second == std::string_view::npos ? value : value.substr(second + 1);
    };
    std::string simple;
    std::string extended;
    std::array<std::string, mostPieces> pieces;
    while (const auto parameter = TakeParameter(field)) {
        if (!SameText(parameter->name.substr(0, parameterName.size()), parameterName))
            continue;
        std::string_view section = parameter->name.substr(parameterName.size());
        if (section.empty()) {
            simple = DecodeEncodedWords(parameter->value);
        } else if (section == "*") {
            extended = DecodeHex(withoutCharset(parameter->value), '%');
        } else if (section.starts_with('*')) {
            const bool isEncoded = section.ends_with('*');
            section = section.substr(1, section.size() - (isEncoded ? 2 : 1));
            std::size_t number = 0;
            const auto [end, error] = std::from_chars(section.data(), section.data() + section.size(), number);
            if (error != std::errc() || end != section.data() + section.size() || number >= mostPieces)
                continue;
            const std::string_view value = parameter->value;
            pieces[number]
                = isEncoded ? DecodeHex(number == 0 ? withoutCharset(value) : value, '%') : std::string(value);
        }
    }
    std::string joined;
    for (const std::string& piece : pieces)
        joined += piece;
    return !extended.empty() ? extended : !joined.empty() ? joined : simple;
}

// The part of a field behind its colon, if it is the one of this name.
std::optional<std::string_view> ValueOf(std::string_view field, std::string_view name)
{
    const std::size_t length = FieldNameLength(field);
    if (length == 0 || !SameText(field.substr(0, length), name))
        return std::nullopt;
    return field.substr(length + 1);
}

}

bool IsContentHeader(std::string_view line)
{
    constexpr std::string_view prefix = "Content-";
    return SameText(line.substr(0, prefix.size()), prefix) && FieldNameLength(line) > prefix.size();
}

MimePart ReadMimePart(LineReader& lines, const MimeBoundaries& boundaries)
{
    MimePart part;
    std::string nameOfType;
    std::string field; // its continued lines joined
    const auto takeField = [&] {
        if (const auto encoding = ValueOf(field, "Content-Transfer-Encoding"))
            part.isBase64 = SameText(Trim(encoding->substr(0, encoding->find(';')), blanks), "base64");
        if (const auto disposition = ValueOf(field, "Content-Disposition"))
            part.name = FileNameIn(*disposition, "filename");
        if (const auto type = ValueOf(field, "Content-Type"))
            nameOfType = FileNameIn(*type, "name");
    };
    for (; lines.HasLine(); lines.Advance()) {
        const std::string_view line = lines.Line();
        if (lines.IsWhole() && line.empty()) {
            lines.Advance();
            break;
        }
        if (boundaries.EndsPart(line))
            break;
        if (!lines.IsWhole() || blanks.find(line.front()) != std::string_view::npos) {
            field += line.substr(0, longestHeader - field.size());
        } else if (FieldNameLength(line) != 0) {
            takeField();
            field = line.substr(0, longestHeader);
        } else {
            break; // the empty line is missing
        }
    }
    takeField();
    if (part.name.empty())
        part.name = nameOfType;
    return part;
}
