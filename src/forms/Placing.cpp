#include "forms/Placing.h"

#include "platform/Bitmap.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// A picture of one pixel's height and a million's width must not leave the range of a length.
std::int32_t WholeLength(double length)
{
    constexpr double limit = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(length, -limit, limit));
}

}

FittedSize Fit(float aspect, double areaWidth, double areaHeight, double margin)
{
    double width = std::nearbyint(areaWidth - margin);
    double height = std::nearbyint(width / static_cast<double>(aspect));
    if (areaHeight - margin < height) {
        width = std::nearbyint(width - (height - areaHeight - margin) * static_cast<double>(aspect));
        height = std::nearbyint(areaHeight - margin);
    }
    return {WholeLength(width), WholeLength(height)};
}

std::optional<FittedSize> FitPicture(const Bitmap& picture, const Control& area, double margin)
{
    if (picture.Height() == 0)
        return std::nullopt;
    const float aspect = static_cast<float>(static_cast<double>(picture.Width()) / picture.Height());
    if (aspect == 0)
        return std::nullopt;
    return Fit(aspect, area.Width(), area.Height(), margin);
}

void CentreInContainer(Control& object, const Control& container)
{
    object.SetTop(container.Height() / 2 - object.Height() / 2);
    object.SetLeft(container.Width() / 2 - object.Width() / 2);
}
