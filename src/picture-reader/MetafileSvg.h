#pragma once

#include <QByteArray>
#include <optional>

// A Windows metafile as an SVG document, with its natural size in pixels at 96 dots to the inch.
struct MetafileSvg {
    QByteArray document;
    double width;
    double height;
};

// WMF, with the placeable header of 22 bytes or without it ([MS-WMF]). Nothing if it cannot be read. May hang or be led
// astray by a malformed file.
std::optional<MetafileSvg> WmfToSvg(QByteArray bytes);

// EMF and EMF+ ([MS-EMF]). Nothing if it cannot be read. May be led astray by a malformed file.
std::optional<MetafileSvg> EmfToSvg(QByteArray bytes);
