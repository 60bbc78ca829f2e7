#include "catalogue/GroupText.h"

#include <algorithm>

std::string_view TakeGroup(std::string_view& text)
{
    constexpr std::size_t longestOmitted = 2;
    // With "group " before it and its end behind it, a longer one would not fit into a command (RFC 3977, section 3.1).
    constexpr std::size_t longestName = 504;
    const std::string_view line = text.substr(0, text.find('\r'));
    text.remove_prefix(std::min(line.size() + 2, text.size()));
    const std::size_t blank = line.find(' ');
    const bool isEntry = blank != std::string_view::npos && blank > longestOmitted && blank <= longestName;
    return line.substr(0, isEntry ? blank : 0);
}
