#pragma once

#include <string>

// A JPEG file of some hundred KB whose scans take its reader many times the 2.5 seconds that it has; with fewer scans,
// less.
std::string SlowJpeg(int scans = 2000);
