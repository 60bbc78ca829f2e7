#pragma once

#include "forms/frmTamarack.h"
#include "pictures/Viewer.h"
#include "platform/Desktop.h"

#include <string>

// The three slots along the bottom of the main form. A stored picture enters the left one, the older ones move to the
// right, and the oldest drops out; its file stays.
class PreviewStrip {
public:
    PreviewStrip(frmTamarack& mainForm, Desktop& desktop, Viewer& viewer);

    // Shows the picture that Picture1 of the main form has just read from this file, under the name that the decoder UU
    // gave to its last file. Does nothing if Picture1 holds none. Lets events through between one slot and the next.
    void ShowPic(const std::string& fileName);

private:
    void MoveOn(int slot);
    void Fill(
        int slot, double width, double height, std::string_view name, const std::string& path, const Bitmap& picture);
    void mnuInteractiveDownload_Click();
    void image2_DblClick(int index);
    void cmdClear_Click(int index);
    void cmdDelete_Click(int index);

    frmTamarack& MainForm;
    Viewer& viewer;
};
