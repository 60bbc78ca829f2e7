#pragma once

#include <string>

// A JPEG file of some hundred KB whose scans take its reader many times the 2.5 seconds that it has; with fewer scans,
// less.
std::string SlowJpeg(int scans = 2000);

// A PNG file of 770 KB with a red picture of 8 by 8 pixels, and with texts that unpack to 800 MB.
std::string PngWithTexts();
