#pragma once

#include "platform/MousePointer.h"

#include <QCursor>

// For platform/ alone.
inline QCursor CursorOf(MousePointer pointer)
{
    switch (pointer) {
    case MousePointer::Hourglass:
        return Qt::WaitCursor;
    case MousePointer::ArrowHourglass:
        return Qt::BusyCursor;
    case MousePointer::Default:
        break;
    }
    return Qt::ArrowCursor;
}
