#include "forms/Placing.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// A picture of one pixel's height and a million's width must not leave the range of a length.
std::int32_t WholeLength(double length)
{
    constexpr double limit = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(std::nearbyint(length), -limit, limit));
}

}

FittedSize Fit(float aspect, double areaWidth, double areaHeight)
{
    FittedSize size{WholeLength(areaWidth), 0};
    size.height = WholeLength(size.width / static_cast<double>(aspect));
    if (areaHeight < size.height) {
        size.width = WholeLength(size.width - (size.height - areaHeight) * static_cast<double>(aspect));
        size.height = WholeLength(areaHeight);
    }
    return size;
}

void CentreInContainer(Control& object, const Control& container)
{
    object.SetTop(container.Height() / 2 - object.Height() / 2);
    object.SetLeft(container.Width() / 2 - object.Width() / 2);
}
