#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

// How the reading of something that looked like an attachment ended. The smaller the number, the worse, and the worst
// one is told for a body of which nothing could be stored.
enum class Outcome : int {
    NotWritten = -3, // whole, but the file could not be written
    Damaged = -2, // an impossible line, a wrong size or a wrong check sum
    Part = -1, // only part of it is there, in this body or in all that came so far
    None = 0, // no attachment after all
    Stored = 1
};

// A part of an attachment that is spread over several articles, as its article tells of it.
struct AttachmentPart {
    std::uint64_t wholeSize = 0; // of the attachment, in bytes
    std::uint64_t total = 0; // the number of all parts, 0 if it is not told
    std::uint64_t begin = 0; // the offset of the part's first byte
    std::uint64_t size = 0; // of the part, in bytes, at least 1; it ends inside the attachment

    // Known behind its last byte.
    std::uint32_t checksum = 0; // the CRC-32 of its bytes
    bool isProven = false; // the article told the same
    std::optional<std::uint32_t> wholeChecksum = {}; // the CRC-32 of the attachment, if it was told

    std::uint64_t End() const { return begin + size; }
};

// Takes the attachments of a body, or parts of such, one after the other: Open, any number of Writes, then Keep or
// Drop. By itself it takes nothing.
class AttachmentSink {
public:
    virtual ~AttachmentSink() = default;

    // The name is as the body has it: any bytes, and a stranger's choice.
    virtual void Open(std::string_view, const std::optional<AttachmentPart>&) { }
    virtual void Write(std::string_view) { }

    // The attachment is whole: Stored, or NotWritten if it could not be kept, by this call or by a Write before it. Or
    // the part is: Stored if the attachment is whole with it, otherwise Part if it is kept, Damaged or NotWritten if
    // not.
    [[nodiscard]] virtual Outcome Keep(const std::optional<AttachmentPart>&) { return Outcome::NotWritten; }

    // The attachment, or the part, is not whole: nothing of it may stay.
    virtual void Drop() { }
};

// One attachment on its way to the sink, gathered into large writes. Whatever is not kept is dropped.
class AttachmentWriter {
public:
    static constexpr std::size_t largestReserve = 32 * 1024;

    // Bytes behind a reserved room that may be scribbled on, so that the decoders can store whole words.
    static constexpr std::size_t slack = 64;

    AttachmentWriter(
        AttachmentSink& attachmentSink, std::string_view name, const std::optional<AttachmentPart>& part = {});
    ~AttachmentWriter();

    // Room for `size` bytes, at most largestReserve. Valid until the next call.
    char* Reserve(std::size_t size)
    {
        if (capacity - used < size)
            Flush();
        return buffer.get() + used;
    }

    // Takes the first `size` bytes of the reserved room as the next bytes of the attachment.
    void Add(std::size_t size) { used += size; }

    // In bytes, so far.
    std::uint64_t Size() const { return flushed + used; }

    // The attachment will not be kept, and what is still added to it only counts.
    void Abandon();

    // See the sink's.
    [[nodiscard]] Outcome Keep(const std::optional<AttachmentPart>& part = {});

private:
    static constexpr std::size_t capacity = 256 * 1024; // the larger the writes, the less a file costs its system

    void Flush();

    AttachmentSink& sink;
    std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(capacity + slack);
    std::size_t used = 0;
    std::uint64_t flushed = 0;
    bool isOpen = true; // in the sink
};
