#pragma once

#include "platform/Picture.h"

// The drawings that were made for this program and that it carries in itself.
namespace Artwork {

// Three by two.
Picture Banner();

}
