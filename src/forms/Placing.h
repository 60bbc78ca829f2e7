#pragma once

#include "platform/Control.h"

#include <cstdint>

// The size that a picture of a given aspect gets in an area, both in twips: as wide as the area, and if it is then too
// high, as high as the area. Whole numbers, halves rounded to the even one.
struct FittedSize {
    std::int32_t width;
    std::int32_t height;
};

// `aspect` is width / height, not 0.
FittedSize Fit(float aspect, double areaWidth, double areaHeight);

// Puts the object into the middle of its container. Nothing is rounded.
void CentreInContainer(Control& object, const Control& container);
