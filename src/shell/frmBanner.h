#pragma once

#include "platform/Form.h"
#include "platform/ImageControl.h"
#include "platform/Label.h"
#include "platform/ProgressBar.h"

// What the user sees while the program starts: its picture, and how far the list of groups has been read.
struct frmBanner : Form {
    frmBanner()
        : Form("frmBanner", "Tamarack", {.clientWidth = 4500, .clientHeight = 3570, .border = BorderStyle::None})
    {
    }

    ImageControl Picture{*this, "Picture", {0, 0, 4500, 3000}};
    Label Label1{*this, "Label1", "", {90, 3030, 4320, 255}}; // what is being read
    ProgressBar ProgressBar1{*this, "ProgressBar1", {90, 3315, 4320, 165}}; // how far
};
