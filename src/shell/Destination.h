#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"

struct frmSelectDrive;

// "Select Destination Drive": the user walks to the directory for the attachments, which is the text of txtSelectDir.
// A search that is going on uses it from its next article on.
class Destination {
public:
    Destination(frmTamarack& mainForm, Desktop& desktop);

private:
    void cmdSelectDir_Click();
    void CmdExit_Click(frmSelectDrive& form);

    frmTamarack& MainForm;
    Desktop& desktop;
};
