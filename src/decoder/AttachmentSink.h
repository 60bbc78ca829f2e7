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

// Where a part belongs in an attachment that is spread over several articles, as its article tells before its bytes.
struct PartPlace {
    std::uint64_t wholeSize = 0; // of the attachment, in bytes
    std::uint64_t total = 0; // the number of all parts, 0 if it is not told
    std::uint64_t begin = 0; // the offset of the part's first byte
    std::uint64_t size = 0; // of the part, in bytes, at least 1; it ends inside the attachment
};

// What is known behind the last byte of a part.
struct PartEnd {
    std::uint32_t checksum = 0; // the CRC-32 of the bytes that were written
    bool isProven = false; // the article told the same
    std::optional<std::uint32_t> wholeChecksum; // the CRC-32 of the attachment, if it was told
};

// Takes the attachments of a body one after the other: Open, any number of Writes, then Keep or Drop. A part of an
// attachment takes the same way, from OpenPart to KeepPart.
class AttachmentSink {
public:
    virtual ~AttachmentSink() = default;

    // The name is as the body has it: any bytes, and a stranger's choice.
    virtual void Open(std::string_view name) = 0;
    virtual void Write(std::string_view bytes) = 0;

    // The attachment is whole. False if it could not be kept, by this call or by a Write before it.
    [[nodiscard]] virtual bool Keep() = 0;

    // The attachment, or the part, is not whole: nothing of it may stay.
    virtual void Drop() = 0;

    // Parts are only for a sink that lasts longer than a body. Any other drops them.
    virtual void OpenPart(std::string_view name, const PartPlace&) { Open(name); }

    // Stored if the attachment is whole with this part. Otherwise Part if that is kept, Damaged or NotWritten if not.
    [[nodiscard]] virtual Outcome KeepPart(const PartEnd&)
    {
        Drop();
        return Outcome::Part;
    }
};

// One attachment on its way to the sink, gathered into large writes. Whatever is not kept is dropped.
class AttachmentWriter {
public:
    static constexpr std::size_t largestReserve = 32 * 1024;

    // Bytes behind a reserved room that may be scribbled on, so that the decoders can store whole words.
    static constexpr std::size_t slack = 64;

    AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name);
    AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name, const PartPlace& place);
    ~AttachmentWriter();
    AttachmentWriter(const AttachmentWriter&) = delete;
    AttachmentWriter& operator=(const AttachmentWriter&) = delete;

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

    // Stored or NotWritten.
    [[nodiscard]] Outcome Keep();

    // Of a part. See the sink's.
    [[nodiscard]] Outcome KeepPart(const PartEnd& end);

private:
    static constexpr std::size_t capacity = 256 * 1024; // the larger the writes, the less a file costs its system

    void Flush();

    AttachmentSink& sink;
    std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(capacity + slack);
    std::size_t used = 0;
    std::uint64_t flushed = 0;
    bool isOpen = true; // in the sink
};
