#pragma once

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/Label.h"
#include "platform/TextArea.h"
#include "platform/TextBox.h"

// Asks for the name of a news server.
struct frmNewsServer : Form {
    frmNewsServer()
        : Form("frmNewsServer", "Add News Server", {.clientWidth = 5160, .clientHeight = 3375})
    {
        SetFallbackTopic(550);
        lblNewsServerName.SetBuddy(txtNewsServer);
        txtText1.SetAccessibleName("Help");
        cmdFreeList.SetToolTip("How to find a news server");
        SetDialogButtons(cmdSave, cmdCancel);
        txtNewsServer.SetFocus();
    }

    Label lblNewsServerName{*this, "lblNewsServerName", "News Server Name:", {120, 120, 1995, 330}};
    TextBox txtNewsServer{*this, "txtNewsServer", {2145, 120, 2895, 330}, {.text = "news.example.com"}};
    // How to find one's news server.
    TextArea txtText1{*this, "txtText1", {120, 570, 4920, 2220}};
    CommandButton cmdSave{*this, "cmdSave", "Save", {120, 2910, 1440, 345}};
    CommandButton cmdCancel{*this, "cmdCancel", "Cancel", {1680, 2910, 1440, 345}};
    CommandButton cmdFreeList{*this, "cmdFreeList", "Show Free List", {3240, 2910, 1800, 345}};
};
