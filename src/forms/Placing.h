#pragma once

#include "platform/Control.h"

#include <cstdint>
#include <optional>

class Bitmap;

// The size that a picture of a given aspect gets in an area, both in twips: as wide as the area, and if it is then too
// high, as high as the area. Whole numbers, halves rounded to the even one.
struct FittedSize {
    std::int32_t width;
    std::int32_t height;
};

// `aspect` is width / height, not 0. `margin` is kept free in both directions; where the height decides, the width
// comes out wider than the aspect wants, by twice the margin times the aspect.
FittedSize Fit(float aspect, double areaWidth, double areaHeight, double margin = 0);

// The same for a picture and the control that it is to lie in. Nothing if there is no picture.
std::optional<FittedSize> FitPicture(const Bitmap& picture, const Control& area, double margin = 0);

// Puts the object into the middle of its container. Nothing is rounded.
void CentreInContainer(Control& object, const Control& container);
