#include "picture-reader/MetafileSvg.h"

#include <QtEndian>
#include <cstdlib>
#include <emf2svg.h>

namespace {

// The header's rectangles: the bounds in the units of the reference device, and the frame in hundredths of a
// millimetre.
constexpr qsizetype boundsAt = 8;
constexpr qsizetype frameAt = 24;

double Extent(const QByteArray& bytes, qsizetype rectangleAt, qsizetype axis)
{
    const char* const first = bytes.constData() + rectangleAt + 4 * axis;
    return static_cast<double>(qFromLittleEndian<qint32>(first + 8)) - qFromLittleEndian<qint32>(first);
}

double NaturalSize(const QByteArray& bytes, qsizetype axis)
{
    constexpr double hundredthsOfMillimetreToPixels = 96 / 2540.0;
    const double frame = Extent(bytes, frameAt, axis) * hundredthsOfMillimetreToPixels;
    return frame >= 1 ? frame : Extent(bytes, boundsAt, axis);
}

}

std::optional<MetafileSvg> EmfToSvg(QByteArray bytes)
{
    constexpr qsizetype smallestHeader = 88;
    if (bytes.size() < smallestHeader)
        return std::nullopt;
    MetafileSvg svg{{}, NaturalSize(bytes, 0), NaturalSize(bytes, 1)};
    if (!(svg.width >= 1) || !(svg.height >= 1))
        return std::nullopt;
    generatorOptions options{};
    options.emfplus = true;
    options.svgDelimiter = true;
    char* text = nullptr;
    std::size_t length = 0;
    // The library writes into its input.
    const bool converted = emf2svg(bytes.data(), static_cast<std::size_t>(bytes.size()), &text, &length, &options) != 0
        && text != nullptr;
    if (converted)
        svg.document = QByteArray(text, static_cast<qsizetype>(length));
    std::free(text);
    return converted ? std::optional(std::move(svg)) : std::nullopt;
}
