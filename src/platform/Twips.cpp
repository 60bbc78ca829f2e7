#include "platform/Twips.h"

#include <QApplication>
#include <QFontMetrics>
#include <cmath>

namespace {

constexpr double twipsPerDesignedPixel = 15;
constexpr double designedLineHeight = 13;

double PixelsPerTwip()
{
    return QFontMetrics(QApplication::font()).height() / designedLineHeight / twipsPerDesignedPixel;
}

}

int Twips::ToPixels(double twips) { return static_cast<int>(std::lround(twips * PixelsPerTwip())); }

double Twips::FromPixels(double pixels) { return pixels / PixelsPerTwip(); }
