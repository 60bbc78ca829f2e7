#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What a sample server has to read.
struct SampleArticle {
    std::int32_t number;
    std::string head; // header lines, each ended by CR LF, without the empty line behind them
    std::string body; // lines ended by CR LF; a line that begins with a dot is doubled by the server, not here
};

struct SampleGroup {
    std::string name;
    std::vector<SampleArticle> articles; // by rising numbers, gaps allowed
};

using SampleGroups = std::vector<SampleGroup>;

// Articles that the criteria of a first start let pass: one that a new search does not look at, with the given number,
// and one behind it for each of these bodies.
SampleGroup GroupOf(std::string name, std::int32_t first, const std::vector<std::string>& bodies);
