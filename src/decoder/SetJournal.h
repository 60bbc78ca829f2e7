#pragma once

#include "decoder/AttachmentSink.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// At the end, a whole attachment is read once more while the window waits: of so many bytes, some seconds long. What is
// larger than that is posted as several files.
constexpr std::uint64_t largestSpreadAttachment = std::uint64_t{4} << 30;

// Of the largest attachment, each part would have 215 KB. The smallest in use have more, and each part costs the next
// one a record to be read.
constexpr std::uint64_t mostParts = 20'000;

// In bytes. No file system takes a quarter of it.
constexpr std::size_t longestSpreadName = 1024;

// What was received of an attachment that is spread over several articles, and the bytes that tell so on the disk: a
// head and one record for each part (docs/formats.md). A record is written in one go behind the last one, and has a
// check sum of its own, so that one whose writing broke off is not taken for a part.
class SetJournal {
public:
    SetJournal(std::string_view newName, std::uint64_t newSize)
        : name(newName)
        , size(newSize)
    {
    }

    // Nothing if these bytes are no journal, or one of no parts. What stands behind the last whole record is not read.
    static std::optional<SetJournal> Read(std::string_view bytes);

    // The longest journal, in bytes.
    static const std::size_t longest;

    // Head and records.
    std::string Bytes() const;
    static std::string Record(const AttachmentPart& part);

    // Of the bytes that were read: where the next record belongs.
    std::size_t Length() const { return length; }

    const std::string& Name() const { return name; }
    std::uint64_t Size() const { return size; } // of the attachment, in bytes

    // In their order in the attachment. No two of them overlap.
    const std::vector<AttachmentPart>& Parts() const { return parts; }

    // As the first part said that told it.
    std::uint64_t Total() const;
    std::optional<std::uint32_t> WholeChecksum() const;

    // The number of all its articles. Where none tells it, as many as it takes if those that are missing hold as much
    // as the largest that is here.
    std::uint64_t Articles() const;

    bool IsWhole() const;

    // Could the part be one of this attachment, but for its bytes?
    bool Admits(const AttachmentPart& part) const;

    // Is none of its bytes there yet?
    bool IsFree(const AttachmentPart& part) const;

    // Is this very part there?
    bool Holds(const AttachmentPart& part) const;

    // A part that is free.
    void Add(const AttachmentPart& part);

    // One that is there.
    void Forget(const AttachmentPart& part);

private:
    std::string name;
    std::uint64_t size;
    std::vector<AttachmentPart> parts;
    std::size_t length = 0;
};
