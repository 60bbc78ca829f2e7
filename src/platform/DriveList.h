#pragma once

#include "platform/ComboBox.h"

// The volumes that are mounted, each shown by its mount point. The root directory is always among them. They are looked
// for anew when the list is about to be used and when the current one is set; the current one stays in the list as long
// as it is that.
class DriveList : public ComboBox {
public:
    DriveList(Container& container, std::string_view name, const Place& place);

    // Makes the volume that holds this path the current one. "C", the name that the first disk has elsewhere, stands
    // for the root directory.
    void SetDrive(std::string_view path);

private:
    void LookForVolumes();

    std::vector<std::string> mountPoints; // of the rows
};
