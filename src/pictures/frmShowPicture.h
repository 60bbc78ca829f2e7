#pragma once

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/ImageControl.h"

// One picture, as large as the window allows.
struct frmShowPicture : Form {
    static constexpr std::string_view emptyCaption = "<Filename Here>";

    static constexpr double designedWidth = 7290 + designedBorders;
    static constexpr double designedHeight = 6975 + designedTitle;
    static constexpr double leastSize = 900;

    frmShowPicture()
        : Form(
            "frmShowPicture", emptyCaption, {.clientWidth = 7290, .clientHeight = 6975, .border = BorderStyle::Sizable})
    {
        SetFallbackTopic(1060);
        cmdViewCurrent.SetToolTip("Show the picture that was stored last");
        Command1.SetToolTip("Empty the window; the file stays");
        Command2.SetToolTip("Delete the file of the picture, without a question");
        Check1.SetToolTip("Follow the search and the slide show");
        ClosesWithEscape();
    }

    CommandButton cmdViewCurrent{*this, "cmdViewCurrent", "View Current", {90, 45, 1140, 390}};
    CommandButton Command1{*this, "Command1", "Clear Image", {1350, 45, 1140, 390}};
    CommandButton Command2{*this, "Command2", "Delete Image", {2625, 45, 1140, 390}};
    CheckBox Check1{*this, "Check1", "Auto update with current", {3975, 45, 3240, 390}};
    Panel SSPanel1{*this, "SSPanel1", {30, 525, 7230, 6420}, PanelEdge::Sunken}; // what a picture is fitted to
    ImageControl Image1{SSPanel1, "Image1", {90, 120, 7020, 6165}}; // the picture; its Tag is the file's path
};
