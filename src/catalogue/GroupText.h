#pragma once

#include <cstddef>
#include <string_view>

// Goes through the text of a server's reply to LIST line by line and finds the name in each.
//
//   alt.kites 0000007055 0000000001 y      (name, last, first, flags; RFC 3977, section 7.6.3)
//
// The lines are joined by CR LF. A line of a name of one or two characters gives no entry, nor does one without a
// blank, nor an empty line.
class GroupText {
public:
    explicit GroupText(std::string_view wholeText)
        : text(wholeText)
    {
    }

    // Goes on to the next line. False past the last one.
    bool NextLine();

    // The name in the line, empty if it gives no entry.
    std::string_view Name() const { return name; }

    // Where the next line begins, 1-based.
    std::size_t Position() const { return position + 1; }

private:
    std::string_view text;
    std::string_view name;
    std::size_t position = 0;
};
