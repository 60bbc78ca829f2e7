#include "catalogue/GroupAddress.h"

#include "base/Text.h"

#include <algorithm>

namespace {

// RFC 5538, sections 3 and 4: a group's name has no "@", which makes a message's address, and no "*", which stands for
// several groups.
std::string GroupOf(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos)
        return std::string(line);
    const std::string_view scheme = line.substr(0, colon);
    const bool isNntp = SameText(scheme, "nntp");
    if (!isNntp && !SameText(scheme, "news") && !SameText(scheme, "snews"))
        return {};
    std::string_view rest = line.substr(colon + 1);
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        rest.remove_prefix(std::min(rest.find('/'), rest.size()));
        rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
    } else if (isNntp) {
        return {};
    }
    // An article's number may stand behind the group.
    const std::string group = DecodeHex(rest.substr(0, isNntp ? rest.find('/') : rest.size()), '%');
    const auto cannotStand = [](unsigned char c) { return c <= ' ' || c == 0x7f || c == '@' || c == '*' || c == '/'; };
    return std::none_of(group.begin(), group.end(), cannotStand) ? group : std::string();
}

}

std::vector<std::string> GroupsIn(std::string_view text)
{
    std::vector<std::string> groups;
    for (const std::string& line : TrimmedParts(text, '\n')) {
        std::string group = GroupOf(Trim(line, " \t\r"));
        if (!group.empty())
            groups.push_back(std::move(group));
    }
    return groups;
}
