#pragma once

#include "decoder/AttachmentSink.h"
#include "decoder/LineReader.h"

#include <cstddef>

// Attachments that are looked for in one body. No article that is meant well comes near it; one that is made of nothing
// but tiny attachments must not keep the disk busy for hours.
constexpr std::size_t mostAttachments = 1000;

// Finds the attachments of a body and hands them to the sink, in their order. Gives the worst of what was met: Stored
// if all were stored, None if there were none.
Outcome DecodeBody(LineReader& lines, AttachmentSink& sink);
