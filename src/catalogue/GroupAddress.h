#pragma once

#include <string>
#include <string_view>
#include <vector>

// The groups that a text names, one to a line, without blanks at its ends: by their names, which are taken as they are,
// or by their addresses (RFC 5538), news:alt.kites, news://server/alt.kites or nntp://server/alt.kites/7002, whatever
// the server. A line that is the address of something else, an article say, names none, and neither does an empty one.
std::vector<std::string> GroupsIn(std::string_view text);
