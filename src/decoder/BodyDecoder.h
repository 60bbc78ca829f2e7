#pragma once

#include "decoder/AttachmentSink.h"
#include "decoder/LineReader.h"

#include <cstddef>

// Attachments that are taken from one body. No article that is meant well comes near it, and one that is made of
// nothing but tiny attachments must not fill a directory.
constexpr std::size_t mostAttachments = 100;

// Finds the attachments of a body and hands them to the sink, in their order. Gives the worst of what was met: Stored
// if all were stored, None if there were none, Damaged at best if there are more than mostAttachments.
Outcome DecodeBody(LineReader& lines, AttachmentSink& sink);
