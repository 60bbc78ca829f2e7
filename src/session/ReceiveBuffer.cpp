#include "session/ReceiveBuffer.h"

#include <algorithm>
#include <memory>
#include <sys/mman.h>

namespace {

// What is larger is a large reply's: it gets its memory by itself and gives it back.
constexpr std::size_t keptCapacity = 1 << 20;

// To grow is to copy, while memory that has not been written to costs nothing: a large reply gets plenty of it at once.
// Most of what the first writing costs is spared by taking the memory in large pages.
std::string InPlentyOfRoom(std::string_view held, std::size_t needed)
{
    constexpr std::size_t leastRoom = 128 << 20;
    constexpr std::size_t pageSize = 4096;
    std::string text;
    text.reserve(std::max(needed, std::min(std::max(leastRoom, 4 * needed), ReceiveBuffer::longest)));
    void* firstPage = text.data();
    std::size_t room = text.capacity();
    if (std::align(pageSize, pageSize, firstPage, room) != nullptr)
        (void)madvise(firstPage, room, MADV_HUGEPAGE);
    text = held;
    return text;
}

// A small text does not keep the memory of a large one.
void ShrinkToSmall(std::string& text)
{
    if (text.capacity() > keptCapacity && text.size() <= keptCapacity)
        text.shrink_to_fit();
}

}

void ReceiveBuffer::Append(std::string_view bytes)
{
    const std::size_t needed = bytesHeld.size() + bytes.size();
    if (needed > bytesHeld.capacity() && needed > keptCapacity)
        bytesHeld = InPlentyOfRoom(bytesHeld, needed);
    bytesHeld.append(bytes);
}

void ReceiveBuffer::Clear()
{
    bytesHeld.clear();
    head = 0;
    searched = 0;
    ShrinkToSmall(bytesHeld);
}

std::optional<std::size_t> ReceiveBuffer::Find(std::string_view part)
{
    const std::size_t found = Text().find(part, searched);
    if (found != std::string_view::npos)
        return found;
    // The rest of one that is cut off may still come.
    searched = Length() - std::min(Length(), part.size() - 1);
    return std::nullopt;
}

std::string ReceiveBuffer::Take(std::size_t count, std::size_t dropped)
{
    const std::size_t behind = Length() - count - dropped;
    searched = 0;
    std::string taken;
    if (behind < count) {
        std::string rest = bytesHeld.substr(head + count + dropped);
        bytesHeld.resize(head + count);
        bytesHeld.erase(0, head);
        head = 0;
        taken.swap(bytesHeld);
        bytesHeld.swap(rest);
        ShrinkToSmall(taken);
        return taken;
    }
    taken = bytesHeld.substr(head, count);
    head += count + dropped;
    // What has been taken is dropped once it is the larger part, so that each byte is moved only a few times.
    if (head > bytesHeld.size() / 2) {
        bytesHeld.erase(0, head);
        head = 0;
        ShrinkToSmall(bytesHeld);
    }
    return taken;
}
