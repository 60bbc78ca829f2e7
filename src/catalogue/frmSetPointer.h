#pragma once

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/Label.h"
#include "platform/TextBox.h"

// How far one group has been read, to be changed by hand.
struct frmSetPointer : Form {
    frmSetPointer()
        : Form("frmSetPointer", "Set Article Pointer", {.clientWidth = 3930, .clientHeight = 1020})
    {
        SetFallbackTopic(610);
        Text2.SetAccessibleName("Group");
        Text1.SetAccessibleName("Article number");
        Text1.SetToolTip("Number of the last article read; 0 begins with the oldest");
        SetDialogButtons(cmdOk[0], cmdOk[1]);
        Text1.SetFocus();
    }

    TextBox Text2{*this, "Text2", {120, 120, 3690, 315}, {.readOnly = true}}; // the group
    TextBox Text1{*this, "Text1", {120, 555, 1260, 345}}; // the number of the last article read
    CommandButton cmdOk[2]
        = {{*this, "cmdOk(0)", "Save", {1500, 555, 1095, 345}}, {*this, "cmdOk(1)", "Cancel", {2715, 555, 1095, 345}}};
};
