#include "demo/sample/Encoders.h"

#include <algorithm>
#include <cstdio>

// Written from the formats' descriptions and without a look at the decoder, so that a mistake is not made twice.

namespace {

constexpr std::string_view crlf = "\r\n";

// The 24 bits of up to three bytes, missing ones as zeros.
std::uint32_t Bits(std::string_view bytes)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i)
        bits = bits * 256 + (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    return bits;
}

std::uint32_t Crc32(std::string_view bytes)
{
    std::uint32_t remainder = 0xffffffff;
    for (const char byte : bytes) {
        remainder ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            remainder = remainder >> 1 ^ ((remainder & 1) != 0 ? 0xedb88320 : 0);
    }
    return ~remainder;
}

std::string Hex(std::uint32_t number)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(number));
    return text;
}

}

std::string Uuencode(std::string_view bytes, std::string_view name, const UuencodeDialect& dialect)
{
    const auto character
        = [&dialect](std::uint32_t value) { return value == 0 ? dialect.zero : static_cast<char>(value + 32); };
    std::string text = "begin " + dialect.mode + " ";
    text += name;
    text += crlf;
    const auto addLine = [&](std::string_view inLine) {
        std::string line(1, character(static_cast<std::uint32_t>(inLine.size())));
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < inLine.size(); i += 3) {
            const std::string_view group = inLine.substr(i, 3);
            const std::size_t characters = dialect.shortLastGroup ? group.size() + 1 : 4;
            for (std::size_t place = 0; place < characters; ++place) {
                const std::uint32_t value = Bits(group) >> (18 - 6 * place) & 63;
                sum += value;
                line += character(value);
            }
        }
        if (dialect.checkCharacters)
            line += character(sum % 64);
        while (dialect.trailingBlanksLost && line.ends_with(' '))
            line.pop_back();
        text += line;
        text += crlf;
    };
    for (std::size_t at = 0; at < bytes.size(); at += dialect.bytesInLine)
        addLine(bytes.substr(at, dialect.bytesInLine));
    if (dialect.closingLine)
        addLine({});
    text += "end";
    text += crlf;
    return text;
}

std::string Yencode(std::string_view bytes, std::string_view name, const YencDialect& dialect)
{
    const std::string_view whole = dialect.whole.empty() ? bytes : dialect.whole;
    const std::string size = std::to_string(bytes.size());
    std::string text = "=ybegin ";
    if (dialect.part != 0)
        text += "part=" + std::to_string(dialect.part) + " ";
    if (dialect.total != 0)
        text += "total=" + std::to_string(dialect.total) + " ";
    text += "line=" + std::to_string(dialect.lineLength) + " size=" + std::to_string(whole.size()) + " name=";
    text += name;
    text += crlf;
    if (dialect.part != 0) {
        text += "=ypart begin=" + std::to_string(dialect.partFirst + 1)
            + " end=" + std::to_string(dialect.partFirst + bytes.size());
        text += crlf;
    }

    std::size_t column = 0;
    for (const char byte : bytes) {
        const char sent = static_cast<char>(byte + 42);
        const bool isCritical = sent == '\0' || sent == '\r' || sent == '\n' || sent == '=';
        if (isCritical || (dialect.escapeLeadingDots && column == 0 && sent == '.')) {
            text += '=';
            text += static_cast<char>(sent + 64);
            column += 2;
        } else {
            text += sent;
            ++column;
        }
        if (column >= dialect.lineLength) {
            text += crlf;
            column = 0;
        }
    }
    if (column != 0)
        text += crlf;

    text += "=yend size=" + size;
    if (dialect.part != 0)
        text += " part=" + std::to_string(dialect.part);
    if (dialect.part != 0 && dialect.checksums)
        text += " pcrc32=" + Hex(Crc32(bytes));
    if (dialect.checksums)
        text += " crc32=" + Hex(dialect.wholeChecksum ? *dialect.wholeChecksum : Crc32(whole));
    text += crlf;
    return text;
}

std::vector<std::string> YencodeParts(
    std::string_view bytes, std::string_view name, std::size_t count, YencDialect dialect)
{
    std::vector<std::string> parts;
    const std::size_t size = (bytes.size() + count - 1) / count;
    dialect.whole = bytes;
    dialect.wholeChecksum = Crc32(bytes);
    dialect.total = dialect.total == 0 ? 0 : count;
    for (dialect.part = 1; dialect.part <= count; ++dialect.part) {
        dialect.partFirst = (dialect.part - 1) * size;
        parts.push_back(Yencode(bytes.substr(dialect.partFirst, size), name, dialect));
    }
    return parts;
}

std::string Base64Lines(std::string_view bytes, std::size_t lineLength)
{
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    std::size_t column = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        for (std::size_t place = 0; place < 4; ++place) {
            text += place <= group.size() ? alphabet[Bits(group) >> (18 - 6 * place) & 63] : '=';
            if (++column == lineLength) {
                text += crlf;
                column = 0;
            }
        }
    }
    if (column != 0)
        text += crlf;
    return text;
}

std::string Base64Block(std::string_view bytes, std::string_view name)
{
    std::string text = "begin-base64 644 ";
    text += name;
    text += crlf;
    text += Base64Lines(bytes, 60);
    text += "====";
    text += crlf;
    return text;
}

std::string MimeTextPart(std::string_view text)
{
    std::string part = "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n";
    part += text;
    return part;
}

std::string MimeBase64Part(std::string_view bytes, std::string_view name, std::string_view type)
{
    const std::string quotedName = '"' + std::string(name) + '"';
    std::string part = "Content-Type: ";
    part += type;
    part += "; name=" + quotedName + "\r\nContent-Transfer-Encoding: base64\r\n"
        + "Content-Disposition: attachment;\r\n\tfilename=" + quotedName + "\r\n\r\n";
    part += Base64Lines(bytes);
    return part;
}

std::string MimeMultipart(const std::vector<std::string>& parts, std::string_view boundary)
{
    const std::string line = "--" + std::string(boundary);
    std::string body = "This is a message in several parts.\r\n\r\n";
    for (const std::string& part : parts) {
        body += line;
        body += crlf;
        body += part;
        if (!part.ends_with(crlf))
            body += crlf;
    }
    return body + line + "--\r\n";
}

std::string DotStuff(std::string_view body)
{
    std::string stuffed;
    stuffed.reserve(body.size() + body.size() / 100);
    for (std::size_t at = 0; at < body.size();) {
        const std::size_t lineEnd = std::min(body.find('\n', at), body.size() - 1) + 1;
        if (body[at] == '.')
            stuffed += '.';
        stuffed += body.substr(at, lineEnd - at);
        at = lineEnd;
    }
    return stuffed;
}
