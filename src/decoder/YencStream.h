#pragma once

#include "decoder/AttachmentSink.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// The data lines of one yEnc attachment, cut anywhere, on their way to a writer. Dots doubled on the wire are undone.
class YencStream {
public:
    explicit YencStream(AttachmentWriter& attachmentWriter);

    // Decodes up to a line of the format's own, and returns the number of bytes that were taken. What is left without
    // such a line being found is the beginning of something whose rest has to come first.
    std::size_t Take(std::string_view text);

    bool IsAtOwnLine() const { return atOwnLine; }

    // An escape was cut off by the end of its line.
    bool IsDamaged() const { return isDamaged; }

    // The CRC-32 of the bytes so far.
    std::uint32_t Checksum() const { return checksum; }

private:
    using BlockDecoder = void (*)(const char*& in, const char* end, char*& out, bool& atLineStart);

    char* TakeChunk(const char*& in, const char* stop, const char* end, char* out);
    bool TakeCharacter(const char*& in, const char* end, char*& out);

    AttachmentWriter& writer;
    BlockDecoder decodeBlocks;
    std::uint32_t checksum = 0;
    bool atLineStart = true;
    bool atOwnLine = false;
    bool isDamaged = false;
};
