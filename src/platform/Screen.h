#pragma once

class QCursor;

// Forms are designed in twips, 1440 to the inch and 15 to the pixel of the design. On screen they grow with the
// application's font by one factor, 1.0 where a line of it is 13 pixels high, so that the designed places fit the
// text at every font size and display scale. Application keeps the font to what the screens have room for.

// A control's place in its container, in twips.
struct Place {
    double left;
    double top;
    double width;
    double height;
};

namespace Twips {

// Pixels on this screen, rounded to the nearest.
int ToPixels(double twips);

double FromPixels(double pixels);

}

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
