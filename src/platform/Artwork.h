#pragma once

#include "platform/Bitmap.h"

// The drawings that were made for this program and that it carries in itself.
namespace Artwork {

// Three by two.
Bitmap Banner();

}
