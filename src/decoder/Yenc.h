#pragma once

#include "decoder/AttachmentSink.h"
#include "decoder/LineReader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// =ybegin part=1 total=3 line=128 size=384000 name=picture.jpg
struct YencBegin {
    std::uint64_t size = 0; // of the whole attachment, in bytes
    bool isOneOfSeveral = false; // the article holds only one part of it
    std::optional<std::uint64_t> part; // its number, if it can be read
    std::uint64_t total = 0; // the number of all parts, 0 if it is not told
    std::string name;
};

// Nothing if the line is no such line, or one without a size or a name.
std::optional<YencBegin> ReadYencBegin(std::string_view line);

// Decodes the attachment whose =ybegin line has just been passed. Never None. A line that does not belong to the
// attachment stays the current one.
Outcome DecodeYenc(LineReader& lines, const YencBegin& begin, AttachmentSink& sink);
