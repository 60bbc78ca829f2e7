#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Attachments written as the posting programs of others write them. The lines end in CR LF, and the dots at line starts
// are not doubled yet.

struct UuencodeDialect {
    std::string mode = "644";
    char zero = '`'; // or the blank of older encoders
    bool trailingBlanksLost = false; // as gateways did; only sensible with a blank for zero
    bool checkCharacters = false; // one more character at the end of each line
    bool shortLastGroup = false; // no characters beyond those that the last bytes need
    bool closingLine = true; // the line of no bytes before "end"
    std::size_t bytesInLine = 45; // at most 63
};
std::string Uuencode(std::string_view bytes, std::string_view name, const UuencodeDialect& dialect = {});

struct YencDialect {
    std::size_t lineLength = 128;
    bool checksums = true;
    bool escapeLeadingDots = false; // many encoders leave a dot at the start of a line as it is

    // A part of an attachment that goes over several articles, or one that is written as the only part of its kind.
    std::size_t part = 0; // 0: not in parts
    std::size_t total = 0; // 0: not told
    std::size_t partFirst = 0; // offset of `bytes` in the whole
    std::string_view whole = {}; // what `bytes` is a part of; empty: `bytes` is all there is
    std::optional<std::uint32_t> wholeChecksum = {}; // its CRC-32, where that has been computed
};
std::string Yencode(std::string_view bytes, std::string_view name, const YencDialect& dialect = {});

// An attachment that goes over so many articles, in their order. With `total` 0 none of them tells how many there are.
std::vector<std::string> YencodeParts(
    std::string_view bytes, std::string_view name, std::size_t count, YencDialect dialect = {.total = 1});

// The characters alone, in lines of `lineLength`, each with its end.
std::string Base64Lines(std::string_view bytes, std::size_t lineLength = 76);

// From "begin-base64" to "====".
std::string Base64Block(std::string_view bytes, std::string_view name);

// One part of a multipart: its header lines, the empty line and its content.
std::string MimeTextPart(std::string_view text);
std::string MimeBase64Part(std::string_view bytes, std::string_view name, std::string_view type = "image/png");

// The body of a multipart: a line for readers that do not know of such things, the parts and their boundary lines.
std::string MimeMultipart(const std::vector<std::string>& parts, std::string_view boundary = "=_tamarack_part");

// Doubles the dots that begin a line, as a news server does when it sends an article.
std::string DotStuff(std::string_view body);
