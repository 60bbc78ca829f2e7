#pragma once

#include <string_view>

// What the person can paste elsewhere; for a picture see Bitmap.
namespace Clipboard {

void SetText(std::string_view text);

}
