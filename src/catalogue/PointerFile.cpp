#include "catalogue/PointerFile.h"

#include "base/Descriptor.h"
#include "base/Text.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr std::size_t numberLength = 4;
constexpr std::size_t nameLength = 80;
constexpr std::size_t recordLength = numberLength + nameLength;

std::int32_t ArticleOf(std::string_view record)
{
    std::uint32_t bits = 0;
    for (std::size_t i = numberLength; i-- > 0;)
        bits = bits << 8 | static_cast<unsigned char>(record[i]);
    return static_cast<std::int32_t>(bits);
}

std::string Record(std::string_view group, std::int32_t article)
{
    std::string record;
    auto bits = static_cast<std::uint32_t>(article);
    for (std::size_t i = 0; i < numberLength; ++i, bits >>= 8)
        record += static_cast<char>(bits & 0xFF);
    record += group.substr(0, nameLength);
    record.resize(recordLength, ' ');
    return record;
}

}

PointerFile::PointerFile(std::string newFileName)
    : fileName(std::move(newFileName))
{
}

// What is left over at the end of a damaged file is no record.
PointerFile::Lookup PointerFile::Find(std::string_view group, const std::function<bool()>& goOn) const
{
    const Descriptor file(open(fileName.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status { };
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        return {1, false, 0};
    const std::int64_t count = status.st_size / static_cast<std::int64_t>(recordLength);
    std::string record(recordLength, '\0');
    for (std::int64_t number = 1; number <= count && (!goOn || goOn()); ++number) {
        if (file.Read(record.data(), recordLength) != static_cast<ssize_t>(recordLength))
            break;
        if (Trim(std::string_view(record).substr(numberLength)) == group)
            return {number, true, ArticleOf(record)};
    }
    return {count + 1, false, 0};
}

bool PointerFile::Write(std::int64_t recordNumber, std::string_view group, std::int32_t article) const
{
    const Descriptor file(open(fileName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666));
    const off_t offset = (recordNumber - 1) * static_cast<off_t>(recordLength);
    return pwrite(file.Number(), Record(group, article).data(), recordLength, offset)
        == static_cast<ssize_t>(recordLength);
}
