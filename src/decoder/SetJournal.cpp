#include "decoder/SetJournal.h"

#include <libdeflate.h>

#include <algorithm>
#include <iterator>

// Numbers are unsigned, their least significant byte first.
//
//   head     8  "TamPart1"          record   8  offset of the part
//            8  attachment's size            8  its size
//            4  length n of name             4  CRC-32 of its bytes
//            n  name                         4  CRC-32 of the whole attachment, or 0
//            4  CRC-32 of the above          2  number of all parts, or 0
//                                            2  1: the article gave the first CRC-32, 2: and the second
//                                            4  CRC-32 of the above

namespace {

constexpr std::string_view mark = "TamPart1";
constexpr std::size_t recordSize = 32;
constexpr std::uint64_t provenFlag = 1;
constexpr std::uint64_t wholeFlag = 2;

static_assert(mostParts <= 0xffff);

void AppendNumber(std::string& bytes, std::uint64_t number, int size)
{
    for (int byte = 0; byte < size; ++byte)
        bytes += static_cast<char>(number >> 8 * byte);
}

std::uint32_t Checksum(std::string_view bytes)
{
    return static_cast<std::uint32_t>(libdeflate_crc32(0, bytes.data(), bytes.size()));
}

void AppendChecksum(std::string& bytes) { AppendNumber(bytes, Checksum(bytes), 4); }

// Off the front of what is known to be there.
std::uint64_t TakeNumber(std::string_view& bytes, std::size_t size)
{
    std::uint64_t number = 0;
    for (std::size_t byte = 0; byte < size; ++byte)
        number |= std::uint64_t{static_cast<unsigned char>(bytes[byte])} << 8 * byte;
    bytes.remove_prefix(size);
    return number;
}

// Do the last four bytes confirm those before them?
bool IsConfirmed(std::string_view bytes)
{
    std::string_view told = bytes.substr(bytes.size() - 4);
    return TakeNumber(told, 4) == Checksum(bytes.substr(0, bytes.size() - 4));
}

std::optional<AttachmentPart> ReadRecord(std::string_view record, std::uint64_t attachmentSize)
{
    if (!IsConfirmed(record))
        return std::nullopt;
    AttachmentPart part{attachmentSize};
    part.begin = TakeNumber(record, 8);
    part.size = TakeNumber(record, 8);
    part.checksum = static_cast<std::uint32_t>(TakeNumber(record, 4));
    const auto wholeChecksum = static_cast<std::uint32_t>(TakeNumber(record, 4));
    part.total = TakeNumber(record, 2);
    const std::uint64_t flags = TakeNumber(record, 2);
    part.isProven = (flags & provenFlag) != 0;
    if ((flags & wholeFlag) != 0)
        part.wholeChecksum = wholeChecksum;
    if (part.size == 0 || part.begin > attachmentSize || part.size > attachmentSize - part.begin)
        return std::nullopt;
    return part;
}

bool BeginsBefore(const AttachmentPart& one, const AttachmentPart& other) { return one.begin < other.begin; }

// Either may be silent about it.
template <class Value> bool Agree(const Value& one, const Value& other)
{
    return one == Value() || other == Value() || one == other;
}

}

const std::size_t SetJournal::longest = mark.size() + 8 + 4 + longestSpreadName + 4 + mostParts * recordSize;

std::optional<SetJournal> SetJournal::Read(std::string_view bytes)
{
    constexpr std::size_t fixed = mark.size() + 8 + 4;
    if (bytes.size() < fixed + 4 || !bytes.starts_with(mark))
        return std::nullopt;
    std::string_view numbers = bytes.substr(mark.size());
    const std::uint64_t size = TakeNumber(numbers, 8);
    const auto nameSize = static_cast<std::size_t>(TakeNumber(numbers, 4));
    if (nameSize > longestSpreadName || bytes.size() < fixed + nameSize + 4 || size > largestSpreadAttachment
        || !IsConfirmed(bytes.substr(0, fixed + nameSize + 4)))
        return std::nullopt;
    SetJournal journal(bytes.substr(fixed, nameSize), size);
    journal.length = fixed + nameSize + 4;
    while (bytes.size() - journal.length >= recordSize && journal.parts.size() < mostParts) {
        const auto part = ReadRecord(bytes.substr(journal.length, recordSize), size);
        if (!part)
            break;
        journal.parts.push_back(*part);
        journal.length += recordSize;
    }
    std::sort(journal.parts.begin(), journal.parts.end(), BeginsBefore);
    const auto overlap = [](const AttachmentPart& one, const AttachmentPart& next) { return one.End() > next.begin; };
    if (journal.parts.empty()
        || std::adjacent_find(journal.parts.begin(), journal.parts.end(), overlap) != journal.parts.end())
        return std::nullopt;
    return journal;
}

std::string SetJournal::Bytes() const
{
    std::string bytes(mark);
    AppendNumber(bytes, size, 8);
    AppendNumber(bytes, name.size(), 4);
    bytes += name;
    AppendChecksum(bytes);
    for (const AttachmentPart& part : parts)
        bytes += Record(part);
    return bytes;
}

std::string SetJournal::Record(const AttachmentPart& part)
{
    std::string record;
    AppendNumber(record, part.begin, 8);
    AppendNumber(record, part.size, 8);
    AppendNumber(record, part.checksum, 4);
    AppendNumber(record, part.wholeChecksum.value_or(0), 4);
    AppendNumber(record, part.total, 2);
    AppendNumber(record, (part.isProven ? provenFlag : 0) | (part.wholeChecksum ? wholeFlag : 0), 2);
    AppendChecksum(record);
    return record;
}

std::uint64_t SetJournal::Total() const
{
    const auto told = std::find_if(parts.begin(), parts.end(), [](const auto& part) { return part.total != 0; });
    return told == parts.end() ? 0 : told->total;
}

std::optional<std::uint32_t> SetJournal::WholeChecksum() const
{
    const auto told
        = std::find_if(parts.begin(), parts.end(), [](const auto& part) { return part.wholeChecksum.has_value(); });
    return told == parts.end() ? std::nullopt : told->wholeChecksum;
}

std::uint64_t SetJournal::Articles() const
{
    std::uint64_t received = 0;
    std::uint64_t largest = 1;
    for (const AttachmentPart& part : parts) {
        received += part.size;
        largest = std::max(largest, part.size);
    }
    const std::uint64_t missing = (size - received + largest - 1) / largest;
    return std::max(Total(), parts.size() + (Total() == 0 || missing == 0 ? missing : 1));
}

bool SetJournal::IsWhole() const
{
    std::uint64_t reached = 0;
    for (const AttachmentPart& part : parts) {
        if (part.begin != reached)
            return false;
        reached = part.End();
    }
    return reached == size;
}

bool SetJournal::Admits(const AttachmentPart& part) const
{
    return Agree(Total(), part.total) && Agree(WholeChecksum(), part.wholeChecksum);
}

bool SetJournal::IsFree(const AttachmentPart& part) const
{
    const auto next = std::lower_bound(parts.begin(), parts.end(), part, BeginsBefore);
    return (next == parts.end() || part.End() <= next->begin)
        && (next == parts.begin() || std::prev(next)->End() <= part.begin);
}

bool SetJournal::Holds(const AttachmentPart& part) const
{
    const auto same = std::lower_bound(parts.begin(), parts.end(), part, BeginsBefore);
    return same != parts.end() && same->begin == part.begin && same->size == part.size
        && same->checksum == part.checksum;
}

void SetJournal::Add(const AttachmentPart& part)
{
    parts.insert(std::lower_bound(parts.begin(), parts.end(), part, BeginsBefore), part);
}

void SetJournal::Forget(const AttachmentPart& part)
{
    parts.erase(std::lower_bound(parts.begin(), parts.end(), part, BeginsBefore));
}
