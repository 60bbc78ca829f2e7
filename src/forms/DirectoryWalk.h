#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"
#include "platform/DirectoryList.h"
#include "platform/DriveList.h"

// How a user walks to a directory in a window that has both lists: a click opens a directory, another volume opens at
// its top. What cannot be opened is told in a message box and changes nothing.
class DirectoryWalk {
public:
    DirectoryWalk(frmTamarack& mainForm, Desktop& desktop, DriveList& drives, DirectoryList& directories);

    // Opens this directory, or the current one if it is gone, with the volume that it lies on.
    void Begin(const std::string& path);

private:
    void Dir1_Click();
    void MakeNew();
    void Drive1_Change();

    frmTamarack& MainForm;
    Desktop& desktop;
    DriveList& Drive1;
    DirectoryList& Dir1;
};
