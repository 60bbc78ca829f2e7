#pragma once

#include "platform/MousePointer.h"

// The whole screen, as against one form.
namespace Screen {

// The pointer over every window of the program, above the pointers of the forms; Default takes it away again.
void SetMousePointer(MousePointer pointer);

// In twips.
double Width();
double Height();

}
