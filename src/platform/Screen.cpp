#include "platform/Screen.h"

#include <QApplication>
#include <QCursor>
#include <QFontMetrics>
#include <QScreen>
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

QCursor CursorOf(MousePointer pointer)
{
    return pointer == MousePointer::Hourglass ? Qt::WaitCursor
        : pointer == MousePointer::Default    ? Qt::ArrowCursor
                                              : Qt::BusyCursor;
}

void Screen::SetMousePointer(MousePointer pointer)
{
    // Nothing happens where there is none.
    QApplication::restoreOverrideCursor();
    if (pointer != MousePointer::Default)
        QApplication::setOverrideCursor(CursorOf(pointer));
}

bool Screen::TellsPlaces() { return !QApplication::platformName().startsWith(QLatin1String("wayland")); }

double Screen::Width() { return Twips::FromPixels(QApplication::primaryScreen()->size().width()); }

double Screen::Height() { return Twips::FromPixels(QApplication::primaryScreen()->size().height()); }
