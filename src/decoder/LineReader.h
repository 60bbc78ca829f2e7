#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

// Hands out an article body line by line, through one block of memory whose size does not depend on the body. Lines end
// in LF or CR LF. A line that began with a dot was sent with two, so that it could not be taken for the end of the
// article; here it has one again.
//
// A decoder that knows how its lines look may take many at once from the bytes Ahead.
class LineReader {
public:
    // Puts at most `size` bytes at `to` and returns their number, 0 at the end.
    using Source = std::function<std::size_t(char* to, std::size_t size)>;

    static constexpr std::size_t blockSize = 256 * 1024;

    explicit LineReader(Source bodySource);

    // A body that lies in memory and stays there.
    explicit LineReader(std::string_view body);

    // False at the end of the body. What follows is about the line that is then current.
    bool HasLine();

    // Without its end. Valid until Advance, Skip or ReadMore.
    std::string_view Line() const { return text; }

    // False for a piece of a line that is longer than the block.
    bool IsWhole() const { return whole; }

    // 1 for LF, 2 for CR LF, 0 if there is none.
    std::size_t LineEndSize() const { return lineEndSize; }

    void Advance();

    // The bytes at hand as they came over the wire, from the current place on: at first the start of the current line.
    std::string_view Ahead() const { return {at, static_cast<std::size_t>(end - at)}; }

    // Moves on by `size` bytes of Ahead.
    void Skip(std::size_t size);

    // Adds to the bytes Ahead. False if there are no more, or if the block is full.
    bool ReadMore();

private:
    void TakeLine(std::size_t size, bool hasEnd);

    Source source;
    std::unique_ptr<char[]> block;
    const char* at = nullptr;
    const char* end = nullptr;
    bool sourceEnded = false;
    bool atLineStart = true;

    std::string_view text;
    std::size_t rawSize = 0; // of the current line with its end, 0 while none is current
    std::size_t lineEndSize = 0;
    bool whole = false;
};
