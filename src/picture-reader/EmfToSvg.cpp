#include "picture-reader/MetafileSvg.h"

#include <emf2svg.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// The header's rectangles: the bounds in the units of the reference device, and the frame in hundredths of a
// millimetre.
constexpr std::size_t boundsAt = 8;
constexpr std::size_t frameAt = 24;

double Extent(const std::string& bytes, std::size_t rectangleAt, std::size_t axis)
{
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::memcpy(&first, bytes.data() + rectangleAt + 4 * axis, 4);
    std::memcpy(&last, bytes.data() + rectangleAt + 8 + 4 * axis, 4);
    return static_cast<double>(last) - first;
}

double NaturalSize(const std::string& bytes, std::size_t axis)
{
    constexpr double hundredthsOfMillimetreToPixels = 96 / 2540.0;
    const double frame = Extent(bytes, frameAt, axis) * hundredthsOfMillimetreToPixels;
    return frame >= 1 ? frame : Extent(bytes, boundsAt, axis);
}

}

std::optional<MetafileSvg> EmfToSvg(std::string bytes)
{
    constexpr std::size_t smallestHeader = 88;
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
    const bool converted = emf2svg(bytes.data(), bytes.size(), &text, &length, &options) != 0 && text != nullptr;
    if (converted)
        svg.document.assign(text, length);
    std::free(text);
    return converted ? std::optional(std::move(svg)) : std::nullopt;
}
