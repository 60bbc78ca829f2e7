#include "decoder/LineReader.h"

#include <cstring>
#include <utility>

LineReader::LineReader(Source bodySource)
    : source(std::move(bodySource))
    , block(std::make_unique_for_overwrite<char[]>(blockSize))
    , at(block.get())
    , end(block.get())
{
}

LineReader::LineReader(std::string_view body)
    : at(body.data())
    , end(body.data() + body.size())
    , sourceEnded(true)
{
}

bool LineReader::ReadMore()
{
    rawSize = 0;
    if (sourceEnded)
        return false;
    const std::size_t held = Ahead().size();
    if (held == blockSize)
        return false;
    if (at != block.get()) {
        if (held != 0)
            std::memmove(block.get(), at, held);
        at = block.get();
        end = at + held;
    }
    const std::size_t count = source(block.get() + held, blockSize - held);
    sourceEnded = count == 0;
    end += count;
    return count != 0;
}

bool LineReader::HasLine()
{
    if (rawSize != 0)
        return true;
    std::size_t searched = 0;
    do {
        const std::string_view ahead = Ahead();
        const std::size_t lineEnd = ahead.find('\n', searched);
        if (lineEnd != std::string_view::npos) {
            TakeLine(lineEnd + 1, true);
            return true;
        }
        searched = ahead.size();
    } while (ReadMore());
    if (at == end)
        return false;
    TakeLine(Ahead().size(), false);
    return true;
}

void LineReader::TakeLine(std::size_t size, bool hasEnd)
{
    rawSize = size;
    whole = atLineStart && (hasEnd || sourceEnded);
    text = Ahead().substr(0, size);
    if (hasEnd)
        text.remove_suffix(1);
    if (hasEnd || sourceEnded) {
        while (text.ends_with('\r'))
            text.remove_suffix(1);
    }
    lineEndSize = hasEnd ? size - text.size() : 0;
    if (atLineStart && text.starts_with(".."))
        text.remove_prefix(1);
}

void LineReader::Advance() { Skip(rawSize); }

void LineReader::Skip(std::size_t size)
{
    rawSize = 0;
    if (size == 0)
        return;
    at += size;
    atLineStart = at[-1] == '\n';
}
