#pragma once

#include "picture-reader/Protocol.h"

#include <QImage>
#include <optional>

// Pictures of strangers are read by a program of its own, tamarack-picture, which has no rights: whatever a file makes
// of it, it can do no more than give other pixels, or none. One is kept for metafiles and one for all other pictures;
// each is started when it is first needed, and anew when it has died.

struct HelpersPicture {
    QSize size; // its own
    QImage pixels; // reduced to the size that was asked for, if it is larger
};

// Has the open file read, from its start. Nothing if it cannot be read, or not within 2.5 seconds, at which the helper
// is killed. Where that takes more than a moment, events are let through meanwhile; whatever they do, they may read
// pictures too.
std::optional<HelpersPicture> ReadInHelper(int descriptor, const PictureRequest& request);
