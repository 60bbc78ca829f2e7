#pragma once

class QCursor;

enum class MousePointer {
    Default = 0,
    Hourglass = 11,
    ArrowHourglass = 13,
};

// For platform/ alone.
QCursor CursorOf(MousePointer pointer);

// The whole screen, as against one form.
namespace Screen {

// The pointer over every window of the program, above the pointers of the forms; Default takes it away again.
void SetMousePointer(MousePointer pointer);

// False where every window is placed by the desktop, which tells nobody where (Wayland): a place that was set once is
// better kept than what a form then takes for its own.
bool TellsPlaces();

// In twips.
double Width();
double Height();

}
