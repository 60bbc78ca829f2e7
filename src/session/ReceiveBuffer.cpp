#include "session/ReceiveBuffer.h"

#include <cstring>

void ReceiveBuffer::Clear()
{
    bytesHeld.clear();
    head = 0;
    // A large reply's memory is given back; a few articles' is kept.
    constexpr std::size_t keptCapacity = 1 << 20;
    if (bytesHeld.capacity() > keptCapacity)
        bytesHeld.shrink_to_fit();
}

std::size_t ReceiveBuffer::Find(std::string_view part, std::size_t from) const
{
    const std::size_t start = head + from - 1;
    if (start >= bytesHeld.size())
        return 0;
    const void* found = memmem(bytesHeld.data() + start, bytesHeld.size() - start, part.data(), part.size());
    if (found == nullptr)
        return 0;
    return static_cast<std::size_t>(static_cast<const char*>(found) - bytesHeld.data()) - head + 1;
}

std::string ReceiveBuffer::Take(std::size_t count, std::size_t dropped)
{
    const std::size_t behind = Length() - count - dropped;
    if (behind < count && head == 0) {
        std::string rest = bytesHeld.substr(count + dropped);
        bytesHeld.resize(count);
        std::string taken = std::move(bytesHeld);
        bytesHeld = std::move(rest);
        return taken;
    }
    std::string taken = bytesHeld.substr(head, count);
    head += count + dropped;
    // What has been taken is dropped once it is the larger part, so that each byte is moved only a few times.
    if (head > bytesHeld.size() / 2) {
        bytesHeld.erase(0, head);
        head = 0;
    }
    return taken;
}
