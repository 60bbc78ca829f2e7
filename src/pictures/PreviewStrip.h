#pragma once

#include "forms/frmTamarack.h"
#include "pictures/Viewer.h"

#include <string>

// The three slots along the bottom of the main form. A stored picture enters the left one, the older ones move to the
// right, and the oldest drops out; its file stays.
class PreviewStrip {
public:
    PreviewStrip(frmTamarack& mainForm, Viewer& viewer);

    // Shows the picture that Picture1 has just read from this file. Does nothing if Picture1 holds none.
    void ShowPic(const std::string& fileName);

private:
    void MoveSlot(int from, int to);
    void mnuInteractiveDownload_Click();
    void image2_DblClick(int index);
    void cmdClear_Click(int index);
    void cmdDelete_Click(int index);

    frmTamarack& MainForm;
    Viewer& viewer;
};
