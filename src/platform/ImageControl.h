#pragma once

#include "platform/Bitmap.h"
#include "platform/Control.h"
#include "platform/MouseEvents.h"

// Shows its picture stretched over all of its place, whatever the picture's own shape, or nothing.
class ImageControl : public Control, public MouseEvents {
public:
    ImageControl(Container& container, std::string_view name, const Place& place);

    const Bitmap& Picture() const { return picture; }
    void SetPicture(const Bitmap& newPicture);

    // Reads a picture file and shows it. False, with nothing changed, if the file cannot be read as a picture. Where
    // the reading takes more than a moment, up to 2.5 seconds, events are let through meanwhile; what they load or set
    // here is newer, and this then comes to nothing.
    [[nodiscard]] bool Load(const std::string& path);

private:
    Bitmap picture;
    int changes = 0; // and beginnings of one
};
