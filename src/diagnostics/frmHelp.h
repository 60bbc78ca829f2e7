#pragma once

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/HelpPages.h"
#include "platform/Label.h"
#include "platform/ListBox.h"
#include "platform/TextBox.h"

// The help, with a search through its pages.
struct frmHelp : Form {
    frmHelp()
        : Form("frmHelp", "Tamarack Help", {.clientWidth = 9600, .clientHeight = 7200, .border = BorderStyle::Sizable})
    {
        lblSearch.SetBuddy(txtSearch);
        lstFound.SetAccessibleName("Pages found");
        lstFound.SetVisible(false);
        cmdBack.SetShortcut("Alt+Left");
        SetDialogButtons(cmdSearch, cmdClose);
    }

    CommandButton cmdContents{*this, "cmdContents", "Contents", {60, 60, 1200, 345}};
    CommandButton cmdBack{*this, "cmdBack", "Back", {1320, 60, 900, 345}};
    Label lblSearch{*this, "lblSearch", "&Search:", {2340, 60, 810, 345}};
    TextBox txtSearch{*this, "txtSearch", {3180, 60, 3600, 345}, {.hint = "Words to look for"}};
    CommandButton cmdSearch{*this, "cmdSearch", "Search", {6840, 60, 1080, 345}};
    CommandButton cmdClose{*this, "cmdClose", "Close", {8460, 60, 1080, 345}};
    ListBox lstFound{*this, "lstFound", {60, 465, 9480, 1200}};
    HelpPages Pages{*this, "Pages", {60, 465, 9480, 6390}};
    // The help file and, for a topic, its number.
    Label lblTopic{*this, "lblTopic", "", {60, 6900, 9480, 270}};
};
