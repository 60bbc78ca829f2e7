#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Empties a text and gives its memory back, which neither clear() nor an assignment does.
inline void GiveBack(std::string& text) { std::string().swap(text); }

// Received text that no terminator has ended yet. Cutting a finished text out of it costs no more than the shorter of
// the text and what stays behind, so that a packet full of terminators is as cheap as one without. The memory of a
// large text goes with it.
class ReceiveBuffer {
public:
    // More than any article or list of groups has, in bytes.
    static constexpr std::size_t longest = std::size_t{512} << 20;

    void Append(std::string_view bytes);
    void Clear();

    std::size_t Length() const { return bytesHeld.size() - head; }
    std::string_view Text() const { return std::string_view(bytesHeld).substr(head); }

    // The number of characters before the first `part`, if there is one. What was searched in vain is not searched
    // again.
    std::optional<std::size_t> Find(std::string_view part);

    // Gives the first `count` characters and drops them and the `dropped` characters behind them.
    std::string Take(std::size_t count, std::size_t dropped);

private:
    std::string bytesHeld;
    std::size_t head = 0; // what lies before has been taken
    std::size_t searched = 0; // behind that
};
