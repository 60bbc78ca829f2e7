#pragma once

#include "decoder/AttachmentSink.h"
#include "decoder/LineReader.h"
#include "decoder/MimeBoundaries.h"

#include <optional>
#include <string>
#include <string_view>

// The name in a line "begin 644 picture.jpg", or with "begin-base64" for the keyword. Nothing for any other line.
std::optional<std::string> NameInBeginLine(std::string_view line, std::string_view keyword);

// Decodes a uuencoded attachment whose begin line has just been passed. None, with nothing opened, if what follows
// shows that the begin line was prose; otherwise Stored, NotWritten, Part or Damaged. A line that does not belong to
// the attachment stays the current one.
Outcome DecodeUuencode(
    LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink);

// A full line of uuencode, 45 bytes: what the middle parts of a posting in several parts consist of.
bool IsFullUuencodeLine(std::string_view line);
