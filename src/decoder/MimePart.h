#pragma once

#include "decoder/LineReader.h"
#include "decoder/MimeBoundaries.h"

#include <string>
#include <string_view>

// What the header of one part of a multipart tells about an attachment in it.
struct MimePart {
    bool isBase64 = false;
    std::string name; // empty for none
};

// "Content-Type: image/jpeg", say: the sign that the line before was a boundary and no prose.
bool IsContentHeader(std::string_view line);

// Reads the header of the part whose boundary line has just been passed, and the empty line behind it.
MimePart ReadMimePart(LineReader& lines, const MimeBoundaries& boundaries);
