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
