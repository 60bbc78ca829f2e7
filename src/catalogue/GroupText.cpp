#include "catalogue/GroupText.h"

#include <algorithm>

bool GroupText::NextLine()
{
    constexpr std::size_t longestOmitted = 2;
    // With "group " before it and its end behind it, a longer one would not fit into a command (RFC 3977, section 3.1).
    constexpr std::size_t longestName = 504;
    name = {};
    if (position >= text.size())
        return false;
    const std::size_t lineEnd = std::min(text.find('\r', position), text.size());
    const std::string_view line = text.substr(position, lineEnd - position);
    const std::size_t blank = line.find(' ');
    if (blank != std::string_view::npos && blank > longestOmitted && blank <= longestName)
        name = line.substr(0, blank);
    position = lineEnd + 2;
    return true;
}
