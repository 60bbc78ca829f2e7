#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// How far each group of a server has been read. The file is a row of 84-byte records, numbered from 1, in the order in
// which the groups were first written; a record keeps its place for the life of the file.
//
//   bytes 0 to 3    the number of the last article visited, 32-bit signed, least significant byte first
//   bytes 4 to 83   the group's name, padded with blanks; a longer name is cut
//
// No handle stays open between two calls.
class PointerFile {
public:
    explicit PointerFile(std::string fileName);

    struct Lookup {
        std::int64_t recordNumber; // where the group's record is, or where it will be: behind the last one
        bool found;
        std::int32_t article; // 0 if it was not found
    };

    // Reads from the first record on, as long as `goOn` says so, to the first of exactly this name, blanks at the ends
    // of a record's name not counting. A missing file has no records.
    Lookup Find(std::string_view group, const std::function<bool()>& goOn = {}) const;

    // Writes one record in place, making the file if there is none. False if that failed.
    [[nodiscard]] bool Write(std::int64_t recordNumber, std::string_view group, std::int32_t article) const;

private:
    std::string fileName;
};
