#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

// How the reading of something that looked like an attachment ended. The smaller the number, the worse, and the worst
// one is told for a body of which nothing could be stored.
enum class Outcome : int {
    NotWritten = -3, // whole, but the file could not be written
    Damaged = -2, // an impossible line, a wrong size or a wrong check sum
    Part = -1, // the body holds only part of it
    None = 0, // no attachment after all
    Stored = 1
};

// Takes the attachments of a body one after the other: Open, any number of Writes, then Keep or Drop.
class AttachmentSink {
public:
    virtual ~AttachmentSink() = default;

    // The name is as the body has it: any bytes, and a stranger's choice.
    virtual void Open(std::string_view name) = 0;
    virtual void Write(std::string_view bytes) = 0;

    // The attachment is whole. False if it could not be kept, by this call or by a Write before it.
    [[nodiscard]] virtual bool Keep() = 0;

    // The attachment is not whole: nothing of it may stay.
    virtual void Drop() = 0;
};

// One attachment on its way to the sink, gathered into large writes. Whatever is not kept is dropped.
class AttachmentWriter {
public:
    static constexpr std::size_t largestReserve = 32 * 1024;

    // Bytes behind a reserved room that may be scribbled on, so that the decoders can store whole words.
    static constexpr std::size_t slack = 64;

    AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name);
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

private:
    static constexpr std::size_t capacity = 256 * 1024; // the larger the writes, the less a file costs its system

    void Flush();

    AttachmentSink& sink;
    std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(capacity + slack);
    std::size_t used = 0;
    std::uint64_t flushed = 0;
    bool isOpen = true; // in the sink
};
