#pragma once

#include "platform/Bitmap.h"

#include <string_view>

// What the person can paste elsewhere.
namespace Clipboard {

void SetText(std::string_view text);
void SetPicture(const Bitmap& picture);

}
