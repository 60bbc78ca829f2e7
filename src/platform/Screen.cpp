#include "platform/Screen.h"

#include "platform/Cursors.h"
#include "platform/Twips.h"

#include <QApplication>
#include <QScreen>

void Screen::SetMousePointer(MousePointer pointer)
{
    const bool overridden = QApplication::overrideCursor() != nullptr;
    if (pointer == MousePointer::Default) {
        if (overridden)
            QApplication::restoreOverrideCursor();
    } else if (overridden) {
        QApplication::changeOverrideCursor(CursorOf(pointer));
    } else {
        QApplication::setOverrideCursor(CursorOf(pointer));
    }
}

bool Screen::TellsPlaces() { return !QApplication::platformName().startsWith(QLatin1String("wayland")); }

double Screen::Width() { return Twips::FromPixels(QApplication::primaryScreen()->size().width()); }

double Screen::Height() { return Twips::FromPixels(QApplication::primaryScreen()->size().height()); }
