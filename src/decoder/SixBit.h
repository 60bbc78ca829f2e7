#pragma once

#include "decoder/AttachmentSink.h"

#include <cstddef>
#include <string_view>

// Six bits to a character, four characters to three bytes: what uuencode and base64 have in common.

enum class SixBitAlphabet { Uuencode, Base64 };

// What was seen among the characters of some groups.
struct SixBitSeen {
    bool foreign = false; // a character outside the alphabet: the bytes are worthless
    bool backtick = false; // of uuencode: zero written as a backtick and not as a blank
};

// -1 for a character outside the alphabet.
int SixBitValue(SixBitAlphabet alphabet, char character);

// Decodes `groups` times four characters into three bytes each, and may scribble on the slack behind them.
SixBitSeen DecodeGroups(SixBitAlphabet alphabet, const char* in, std::size_t groups, char* out);

// A line as most lines of an attachment look: an optional fixed first character, groups that are full, perhaps one
// character more that is not looked at, and the line end.
struct LineShape {
    char first = 0; // 0 for none
    std::size_t groups = 0;
    bool oneMore = false;
    std::size_t lineEndSize = 0; // 1 for LF, 2 for CR LF

    std::size_t Size() const { return (first != 0 ? 1 : 0) + 4 * groups + (oneMore ? 1 : 0) + lineEndSize; }
};

// Decodes as many lines of this shape as `ahead` begins with, and returns the number of bytes that they take there. The
// line at which it stops may be of any other kind, damaged too; to tell is up to the caller.
std::size_t DecodeLines(SixBitAlphabet alphabet, const LineShape& shape, std::string_view ahead,
    AttachmentWriter& writer, bool& backtickSeen);
