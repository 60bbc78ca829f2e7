#pragma once

#include "platform/Control.h"

#include <vector>

// The volumes that are mounted, each shown by its mount point. The root directory is always among them.
class DriveList : public Control {
public:
    DriveList(Container& container, std::string_view name, const Place& place);

    // The mount point of the current volume.
    std::string Drive() const;

    // Makes the volume that holds this path the current one. "C", the name that the first disk has elsewhere, stands
    // for the root directory.
    void SetDrive(std::string_view path);

    std::function<void()> Change; // another volume is the current one, from code too

private:
    std::vector<std::string> mountPoints;
};
