#pragma once

#include "forms/frmTamarack.h"

#include <string>

// The three slots along the bottom of the main form. A stored picture enters the left one, the older ones move to the
// right, and the oldest drops out; its file stays.
class PreviewStrip {
public:
    explicit PreviewStrip(frmTamarack& mainForm);

    // Shows the picture that Picture1 has just read from this file. Does nothing if Picture1 holds none.
    void ShowPic(const std::string& fileName);

private:
    void MoveSlot(int from, int to);
    void mnuInteractiveDownload_Click();

    frmTamarack& MainForm;
};
