#pragma once

#include "platform/Buttons.h"
#include "platform/DirectoryList.h"
#include "platform/DriveList.h"
#include "platform/FileList.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/ImageControl.h"
#include "platform/Label.h"
#include "platform/Menu.h"
#include "platform/StatusBar.h"
#include "platform/Stepper.h"
#include "platform/TextBox.h"
#include "platform/Timer.h"

// The pictures of one directory as a running wall of six panes, which are numbered clockwise.
struct frmSlideShow : Form {
    static constexpr double designedHeight = 7305;

    frmSlideShow()
        : Form("frmSlideShow", "Slide Show", {.clientWidth = 6450, .clientHeight = 6645})
    {
        SetFallbackTopic(1070);
        Command1[6].SetEnabled(false);
        Command1[6].SetAccessibleName("Backdrop");
        for (int pane = 0; pane < 6; ++pane) {
            const std::string name = "Pane " + std::to_string(pane);
            PreviewImage[pane].SetToolTip(name);
            SSPanel1[pane].SetAccessibleName(name);
            SSPanel1[pane].TakesFocus();
        }
        Command1[2].SetToolTip("Delete the file of the selected pane, without a question");
        Label1[0].SetBuddy(txtDelay);
        Drive1.SetAccessibleName("Drives");
        Dir1.SetAccessibleName("Directories");
        lstFiles.SetAccessibleName("Pictures");

        // As they lie on the window.
        Control::SetTabOrder({&chkOptions, &Command1[7], &txtDelay, &Command1[0], &Command1[5], &Command1[1],
            &Command1[2], &Command1[3], &Command1[4]});
    }

    Menu mnuFile{*this, "mnuFile", "&File"};
    MenuEntry mnuExit{mnuFile, "mnuExit", "Exit"};
    Menu mnuControl{*this, "mnuControl", "&Control"};
    MenuEntry mnuStart{mnuControl, "mnuStart", "Start", "Ctrl+R"};
    MenuEntry mnuPause{mnuControl, "mnuPause", "Pause", "Ctrl+P"};
    MenuEntry mnuStop{mnuControl, "mnuStop", "Stop", "Ctrl+S"};
    Menu mnuHelp{*this, "mnuHelp", "&Help"};
    MenuEntry mnuTips{mnuHelp, "mnuTips", "Tips"};

    DriveList Drive1{*this, "Drive1", {45, 90, 3330, 315}}; // the volumes
    DirectoryList Dir1{*this, "Dir1", {45, 420, 3330, 1665}}; // the directories of the volume
    FileList lstFiles{*this, "lstFiles", {3390, 75, 3060, 2820}, {".wmf", ".emf", ".jpg", ".gif", ".bmp", ".ico"}};
    // The blank one is a backdrop for the check box and the button beside it.
    CommandButton Command1[8] = {{*this, "Command1(0)", "Start", {5505, 4035, 870, 330}},
        {*this, "Command1(1)", "Stop", {5505, 4765, 870, 330}},
        {*this, "Command1(2)", "Delete", {5505, 5130, 870, 330}},
        {*this, "Command1(3)", "Viewer", {5505, 5495, 870, 330}},
        {*this, "Command1(4)", "Clear", {5505, 5860, 870, 330}},
        {*this, "Command1(5)", "Pause", {5505, 4400, 870, 330}}, {*this, "Command1(6)", "", {45, 2145, 3330, 720}},
        {*this, "Command1(7)", "Refresh File List", {1890, 2295, 1350, 375}}};
    CheckBox chkOptions{*this, "chkOptions(0)", "Loop continuously", {135, 2295, 1710, 375}};

    // The panes, and the picture in each.
    Panel SSPanel1[6] = {{*this, "SSPanel1(0)", {45, 2940, 1770, 1605}, PanelEdge::Sunken},
        {*this, "SSPanel1(1)", {1845, 2940, 1770, 1605}, PanelEdge::Sunken},
        {*this, "SSPanel1(2)", {3645, 2940, 1770, 1605}, PanelEdge::Sunken},
        {*this, "SSPanel1(3)", {3645, 4605, 1770, 1605}, PanelEdge::Sunken},
        {*this, "SSPanel1(4)", {1845, 4590, 1770, 1605}, PanelEdge::Sunken},
        {*this, "SSPanel1(5)", {45, 4590, 1770, 1605}, PanelEdge::Sunken}};
    static constexpr Place designedImage[6] = {{15, 15, 1695, 1530}, {15, 15, 1695, 1530}, {15, 15, 1695, 1530},
        {15, 15, 1695, 1530}, {30, 15, 1695, 1530}, {15, 15, 1695, 1530}};
    ImageControl PreviewImage[6]
        = {{SSPanel1[0], "PreviewImage(0)", designedImage[0]}, {SSPanel1[1], "PreviewImage(1)", designedImage[1]},
            {SSPanel1[2], "PreviewImage(2)", designedImage[2]}, {SSPanel1[3], "PreviewImage(3)", designedImage[3]},
            {SSPanel1[4], "PreviewImage(4)", designedImage[4]}, {SSPanel1[5], "PreviewImage(5)", designedImage[5]}};

    // Above and below the delay.
    Label Label1[2] = {{*this, "Label1(0)", "Slide Delay", {5430, 2910, 1005, 420}, Alignment::Centre},
        {*this, "Label1(1)", "Milli-Seconds", {5430, 3615, 1005, 420}, Alignment::Centre}};
    TextBox txtDelay{*this, "txtDelay", {5505, 3330, 660, 285}, {.text = designedDelay}};
    // Steps the delay.
    Stepper UpDown1{*this, "UpDown1", txtDelay, {6180, 3330, 195, 285}, {.minimum = 10, .maximum = 35000, .step = 1}};
    // Thin rules below the menu and above the status bar.
    Panel Frame1[2] = {{*this, "Frame1(0)", {0, 15, 6795, 30}, PanelEdge::Sunken},
        {*this, "Frame1(1)", {0, 6255, 6795, 30}, PanelEdge::Sunken}};
    StatusBar StatusBar1{*this, "StatusBar1", {0, 6300, 6450, 345},
        {{"Displaying 10000 of 10000", "", "Current image number displayed"},
            {"Stopped", "Stopped", "Current pane being updated"},
            {"", "", "Filename of image mouse is currently over", PanelStyle::Text, true}},
        StatusBarPlace::BottomEdge};
    // Reads each picture; it lies to the right of the window, where nobody sees it.
    ImageControl Picture1{*this, "Picture1", {6810, 4530, 1515, 1350}};
    Timer Timer1{std::chrono::milliseconds(0)}; // the show's clock

    static constexpr std::string_view designedDelay = "500";
};
