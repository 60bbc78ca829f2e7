#include "platform/Screen.h"

#include "platform/Twips.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>

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
