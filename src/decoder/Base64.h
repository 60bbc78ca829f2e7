#pragma once

#include "decoder/AttachmentSink.h"
#include "decoder/LineReader.h"
#include "decoder/MimeBoundaries.h"

#include <string>
#include <string_view>

// Decodes an attachment whose "begin-base64" line has just been passed. None, with nothing opened, if what follows
// shows that the line was prose; otherwise Stored, NotWritten, Part or Damaged. A line that does not belong to the
// attachment stays the current one.
Outcome DecodeBeginBase64(
    LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink);

// Decodes a base64 part of a multipart whose header has just been passed. Never None. The boundary line, or a line that
// is no base64, stays the current one.
Outcome DecodeBase64Part(
    LineReader& lines, std::string_view name, const MimeBoundaries& boundaries, AttachmentSink& sink);

// The bytes of a short text such as an encoded file name, as far as they can be read.
std::string DecodeBase64Text(std::string_view text);
