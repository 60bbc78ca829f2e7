#include "catalogue/PointerFile.h"

#include "base/Files.h"
#include "base/Text.h"

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

PointerFile::Lookup PointerFile::Find(std::string_view group, const std::function<bool()>& goOn) const
{
    const RandomFile file(fileName, RandomAccess::Read, recordLength);
    const std::int64_t count = file.RecordCount();
    std::string record;
    for (std::int64_t number = 1; number <= count && (!goOn || goOn()); ++number) {
        if (file.Read(number, record) && Trim(std::string_view(record).substr(numberLength)) == group)
            return {number, true, ArticleOf(record)};
    }
    return {count + 1, false, 0};
}

bool PointerFile::Write(std::int64_t recordNumber, std::string_view group, std::int32_t article) const
{
    RandomFile file(fileName, RandomAccess::ReadWrite, recordLength);
    return file.Write(recordNumber, Record(group, article));
}
