#pragma once

#include "platform/Desktop.h"

// Asks the desktop to keep the computer from suspending, or the screen from blanking, as long as the result lives.
// Where nobody can do that, nothing happens. Whoever was asked lets go by itself when this process ends. For platform/
// alone.
std::shared_ptr<void> MakeWakeful(KeptAwake what, std::string_view reason);
