#pragma once

#include "demo/sample/SampleGroups.h"

#include <string>
#include <vector>

// What must lie on disk after a search of the sample groups.
struct ExpectedFile {
    std::string group; // the sub directory of the destination
    std::string name;
    std::string bytes;
};

struct SamplePostings {
    SampleGroups groups;

    // The groups that have articles. The others only make the group list longer.
    std::vector<std::string> groupsToSearch;

    // After one search from the beginning into an empty destination, with "Use group name as sub directory" checked and
    // "Download all attachments matching selection criteria" selected. The criteria are JPEG, GIF and
    // bit map files and sampleAdditionalCriteria.
    std::vector<ExpectedFile> expected;
};

// For the field "Additional criteria".
inline constexpr const char* sampleAdditionalCriteria = ".png;wallpaper";

// Groups with invented names and some forty articles: pictures drawn by code in every encoding that is read, talk,
// damaged attachments, gaps in the numbers, and names that would lead out of the destination. Each group begins with
// a talk article, since a search of a new group does not look at the first one.
SamplePostings MakeSamplePostings();
