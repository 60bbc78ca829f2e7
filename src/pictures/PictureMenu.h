#pragma once

#include "platform/Desktop.h"
#include "platform/Frame.h"
#include "platform/ImageControl.h"

#include <functional>
#include <string>

// Lets the person take a picture that is shown elsewhere: a menu on it and on the panel around it, to open its file or
// the directory and to copy the picture or the name, and the file by dragging the picture. `path` tells the file's.
void OfferPicture(Desktop& desktop, ImageControl& image, Panel& around, const std::function<std::string()>& path);
