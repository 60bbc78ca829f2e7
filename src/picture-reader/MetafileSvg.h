#pragma once

#include <optional>
#include <string>

// A Windows metafile as an SVG document, with its natural size in pixels at 96 dots to the inch.
struct MetafileSvg {
    std::string document;
    double width;
    double height;
};

// WMF, with the placeable header of 22 bytes or without it ([MS-WMF]). Nothing if it cannot be read. May hang or be led
// astray by a malformed file.
std::optional<MetafileSvg> WmfToSvg(std::string bytes);

// EMF and EMF+ ([MS-EMF]). Nothing if it cannot be read. May be led astray by a malformed file.
std::optional<MetafileSvg> EmfToSvg(std::string bytes);
