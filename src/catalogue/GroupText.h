#pragma once

#include <string_view>

// Takes the next line off the text of a server's reply to LIST, and gives the name in it.
//
//   alt.kites 0000007055 0000000001 y      (name, last, first, flags; RFC 3977, section 7.6.3)
//
// The lines are joined by CR LF. Empty for a line of a name of one or two characters, for one without a blank, and for
// an empty line.
std::string_view TakeGroup(std::string_view& text);
