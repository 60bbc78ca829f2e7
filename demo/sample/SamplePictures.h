#pragma once

#include <string>

enum class Scene { Kites, Harbour, Mountains, Rosette, Mosaic, Aurora };

// Draws a picture and gives the bytes of its file. The same arguments give the same picture; another seed gives other
// colours and places. `format` is "JPEG", "PNG" or "BMP". Width and height are in pixels.
std::string DrawPicture(Scene scene, int width, int height, unsigned seed, const char* format);
