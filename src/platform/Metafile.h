#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// Windows metafiles (WMF, [MS-WMF]; EMF, [MS-EMF]) are read by a program of their own, tamarack-metafile, since a
// malformed one can make its reader hang or die.

struct MetafilePicture {
    int width; // its own size, in pixels at 96 dots to the inch
    int height;
    int renderedWidth;
    int renderedHeight;
    std::vector<std::uint32_t> pixels; // 0xffRRGGBB, row by row
};

// How many bytes from the start of a file IsMetafile wants to see; a file may have fewer.
constexpr std::size_t metafileHeadLength = 44;

bool IsMetafile(std::string_view head);

// Has the open file read from its start, and rendered in at most this size. Nothing if it cannot be read, or not within
// some seconds. No event is delivered meanwhile.
std::optional<MetafilePicture> RenderMetafile(int descriptor, int maxWidth, int maxHeight);
