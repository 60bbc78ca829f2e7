#pragma once

#include "decoder/AttachmentDecoder.h"
#include "platform/Buttons.h"
#include "platform/ComboBox.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/ImageControl.h"
#include "platform/Label.h"
#include "platform/ListBox.h"
#include "platform/Menu.h"
#include "platform/Socket.h"
#include "platform/StatusBar.h"
#include "platform/Stepper.h"
#include "platform/TabStrip.h"
#include "platform/TextArea.h"
#include "platform/TextBox.h"
#include "platform/Timer.h"

// The main window: what is on it and where. The controls are the program's state: what a search looks for, which
// groups it walks and where files go is read from here at the moment it is needed.
struct frmTamarack : Form {
    // The program's name and the address of its home page.
    static const std::string_view idleCaption;

    // Of the panel that shows how the connection fares, while there is nothing to tell of its encryption.
    static constexpr std::string_view connectionToolTip = "Connection Status";

    // Without the preview strip, and with it. In twips.
    static constexpr double heightWithoutPreviews = 4380;
    static constexpr double heightWithPreviews = 7005;

    frmTamarack();

    Menu mnuFile{*this, "mnuFile", "&File"};
    MenuEntry mnuFindNow{mnuFile, "mnuFindNow", "Find Now", "F5"};
    MenuEntry mnuDash3{mnuFile, "mnuDash3"};
    MenuEntry mnuClose{mnuFile, "mnuClose", "Exit", "Ctrl+Q"};
    Menu mnuView{*this, "mnuView", "&Viewer"};
    MenuEntry mnuInteractiveDownload{mnuView, "mnuInteractiveDownload", "Interactive Download"};
    MenuEntry mnuSizeableViewer{mnuView, "mnuSizeableViewer", "Sizeable Viewer"};
    MenuEntry mnuSlideShow{mnuView, "mnuSlideShow", "Slide Show"};
    Menu mnuHelp{*this, "mnuHelp", "&Help"};
    MenuEntry mnuHelpTopics{mnuHelp, "mnuHelpTopics", "Help Topics"};
    MenuEntry mnuDash1{mnuHelp, "mnuDash1"};
    MenuEntry mnuAbout{mnuHelp, "mnuAbout", "About"};

    Panel Frame1{*this, "Frame1", {-105, -15, 8100, 45}, PanelEdge::Sunken}; // a thin rule under the menu bar
    // The outer tabs; those of the groups are in SSTab1.
    TabStrip SSTMain{*this, "SSTMain", {30, 60, 5310, 3270},
        {"Name && Location", "Advanced Filtering", "Server Setup", "News Groups"}};

    // Name & Location: where files go and which names are wanted.
    Container& nameAndLocation = SSTMain.Page(0);
    CommandButton cmdSelectDir{nameAndLocation, "cmdSelectDir", "Select Destination Drive", {90, 90, 2385, 345}};
    CheckBox chkGroupSubDir{
        nameAndLocation, "chkGroupSubDir", "Use group name as sub directory", {2610, 60, 2580, 405}, 1};
    TextArea txtSelectDir{nameAndLocation, "txtSelectDir", {90, 495, 5055, 615}};
    Frame Frame2{nameAndLocation, "Frame2", "Search Criteria", {90, 1155, 5055, 1485}};
    CheckBox chkJPEGFiles{Frame2, "chkJPEGFiles", "JPEG Files (*.jpg)", {150, 285, 2325, 255}, 1};
    CheckBox chkGIFFiles{Frame2, "chkGIFFiles", "GIF Files (*.gif)", {2580, 285, 2325, 255}};
    CheckBox chkBitMapFiles{Frame2, "chkBitMapFiles", "Bit Map Files (*.bmp)", {150, 570, 2325, 255}};
    CheckBox chkMPEGFiles{Frame2, "chkMPEGFiles", "MPEG Files (*.mpg)", {2580, 570, 2325, 255}};
    Label Label3{Frame2, "Label3", "Additional criteria (separated by semi-colons)", {150, 870, 4755, 240}};
    TextBox txtNamed{Frame2, "txtNamed", {150, 1125, 4755, 315}, {.hint = ".png;holiday"}};

    // Advanced Filtering: which articles are wanted, and how many.
    Panel SSFrame1{SSTMain.Page(1), "SSFrame1", {60, 60, 5130, 2580}, PanelEdge::Line}; // all of this tab
    Label lblSizeIs{SSFrame1, "lblSizeIs", "Total Lines:", {120, 105, 1140, 315}};
    ComboBox cboSizeIs{SSFrame1, "cboSizeIs", {1260, 105, 1305, 315}, {"", "At Least", "At Most"}};
    TextBox txtKB{SSFrame1, "txtKB", {2610, 105, 750, 315}, {.text = "10"}};
    // Steps the number of lines.
    Stepper SpinButton1{
        SSFrame1, "SpinButton1", txtKB, {3375, 105, 255, 315}, {.minimum = 10, .maximum = 35000, .step = 10}};
    CheckBox chkLimitPictures{SSFrame1, "chkLimitPictures", "Limit the Number of Pictures to:", {120, 495, 2445, 405}};
    TextBox txtLimitPictures{SSFrame1, "txtLimitPictures", {2610, 540, 750, 315}, {.text = "10"}};
    Stepper udLimitPictures{SSFrame1, "udLimitPictures", txtLimitPictures, {3375, 540, 255, 315},
        {.minimum = 1, .maximum = 10000, .step = 1}};
    Label lblPerNewsGroup{SSFrame1, "lblPerNewsGroup", "per News Group", {3660, 495, 1455, 405}};
    CheckBox chkMaximumFiles{SSFrame1, "chkMaximumFiles", "Maximum Files to Download:", {120, 930, 2445, 405}};
    TextBox txtMaxToDownload{SSFrame1, "txtMaxToDownload", {2610, 975, 750, 315}, {.text = "10"}};
    Stepper udMaxToDownload{SSFrame1, "udMaxToDownload", txtMaxToDownload, {3375, 975, 255, 315},
        {.minimum = 0, .maximum = 10000, .step = 1}};
    OptionButton chkSingleParts{SSFrame1, "chkSingleParts",
        "Must be a single part message (header contains 01/01 or 1/1)", {120, 1380, 4890, 405}, true};
    OptionButton chkAllCriteria{
        SSFrame1, "chkAllCriteria", "Download all attachments matching selection criteria", {120, 1785, 4890, 405}};
    OptionButton chkAllArticles{SSFrame1, "chkAllArticles", "Download all attachments", {120, 2190, 4890, 330}};
    // The limit counts lines, so the unit stays below the edge of the panel, where nobody sees it.
    Label lblKB{SSFrame1, "lblKB", "KB", {3810, 2700, 450, 255}};

    // Server Setup: the server and who one is to it, in a panel that is disabled as long as the session is in use.
    Panel SSFrame2{SSTMain.Page(2), "SSFrame2", {60, 60, 5130, 2580}, PanelEdge::Line};
    Label lblUseThisServerToPerformTheQuery{SSFrame2, "lblUseThisServerToPerformTheQuery",
        "Use this News Server to perform the query:", {120, 60, 4890, 255}};
    ComboBox cboNewsServer{SSFrame2, "cboNewsServer", {120, 330, 3330, 330}};
    Label lblPort{SSFrame2, "lblPort", "Port:", {3600, 330, 510, 330}};
    TextBox txtPort{SSFrame2, "txtPort", {4140, 330, 840, 330}, {.text = "119", .maxLength = 4}};
    CommandButton cmdAddNewsServer{SSFrame2, "cmdAddNewsServer", "Add News Server...", {120, 780, 2355, 345}};
    CommandButton cmdDeleteServer{SSFrame2, "cmdDeleteServer", "Delete News Server", {2625, 780, 2355, 345}};
    CheckBox chkUserName{
        SSFrame2, "chkUserName", "Username/Password Required for the News Server", {120, 1260, 4890, 405}};
    Label lblUserName{SSFrame2, "lblUserName", "User Name:", {120, 1725, 1260, 315}};
    TextBox txtUserName{SSFrame2, "txtUserName", {1410, 1725, 2880, 315}, {.maxLength = 20}};
    Label lblPassword{SSFrame2, "lblPassword", "Password:", {120, 2130, 1260, 315}};
    TextBox txtPassword{SSFrame2, "txtPassword", {1410, 2130, 2880, 315}, {.maxLength = 20, .masked = true}};

    // News Groups: the lists.
    TabStrip SSTab1{
        SSTMain.Page(3), "SSTab1", {45, 45, 5160, 2220}, {"Selected Groups", "Filtered Groups", "All Groups"}};

    Container& selectedGroups = SSTab1.Page(0);
    TextBox txtManual{selectedGroups, "txtManual", {60, 60, 3390, 330}, {.hint = "Name of a group"}};
    CommandButton Command3{selectedGroups, "Command3", "Add Manually", {3540, 60, 1530, 330}};
    ListBox lstSelectedGroups{selectedGroups, "lstSelectedGroups", {60, 450, 2985, 1335},
        {.extended = true, .hint = "Double-click groups on the other two tabs, or type a name above."}};
    ArrowButton MyUpDown[4] = {{selectedGroups, "MyUpDown(0)", Arrow::Up, "Move up", {3090, 787, 360, 324}},
        {selectedGroups, "MyUpDown(1)", Arrow::Down, "Move down", {3090, 1124, 360, 324}},
        {selectedGroups, "MyUpDown(2)", Arrow::ToTop, "Move to the top", {3090, 450, 360, 324}},
        {selectedGroups, "MyUpDown(3)", Arrow::ToBottom, "Move to the end", {3090, 1461, 360, 324}}};
    CommandButton cmdClearAll{selectedGroups, "cmdClearAll", "Clear All", {3540, 450, 1530, 330}};
    CommandButton cmdClearSelected{selectedGroups, "cmdClearSelected", "Clear Selected", {3540, 785, 1530, 330}};
    CommandButton cmdResetGroup{selectedGroups, "cmdResetGroup", "Reset Group", {3540, 1120, 1530, 330}};
    CommandButton Command4{selectedGroups, "Command4", "Set Pointer", {3540, 1455, 1530, 330}};

    Container& filteredGroups = SSTab1.Page(1);
    Label lblNewsGroups{filteredGroups, "lblNewsGroups", "Group Filters", {60, 60, 1290, 330}};
    TextBox txtNewsGroups{filteredGroups, "txtNewsGroups", {1380, 60, 3690, 330}, {.hint = "pictures;kites"}};
    ListBox lstFilteredGroups{filteredGroups, "lstFilteredGroups", {60, 450, 3390, 1335},
        {.sorted = true, .extended = true, .hint = "Type parts of group names above and press a filter."}};
    CommandButton cmdAndFilter{filteredGroups, "cmdAndFilter", "Filter (AND)", {3540, 450, 1530, 330}};
    CommandButton cmdOrFilter{filteredGroups, "cmdOrFilter", "Filter (OR)", {3540, 785, 1530, 330}};
    CommandButton cmdSavePicks{filteredGroups, "cmdSavePicks", "Save Picks", {3540, 1455, 1530, 330}};

    Container& allGroups = SSTab1.Page(2);
    ListBox lstAllGroups{allGroups, "lstAllGroups", {60, 60, 2745, 1725},
        {.sorted = true, .hint = "Refresh From Network fetches the server's groups."}};
    // Over the list while it is being filled.
    Label Label1{allGroups, "Label1", "Rebuilding List...Please Wait", {60, 60, 2745, 1725}, Alignment::Centre};
    CommandButton cmdRefresh{allGroups, "cmdRefresh", "Refresh From Network", {2895, 60, 2175, 345}};
    CommandButton cmdRefreshDisk{allGroups, "cmdRefreshDisk", "Refresh From Disk", {2895, 465, 2175, 345}};
    CheckBox chkAutoLoad{allGroups, "chkAutoLoad", "Auto-load from disk", {2895, 900, 2175, 345}, 1};

    // How many groups each list holds, and what is being done with them.
    StatusBar StatusBar2{SSTMain.Page(3), "StatusBar2", {45, 2310, 5160, 270},
        {{"Total: 64318", "Total: 0", "Total number of active groups"},
            {"Filtered: 128636", "Filtered: 0", "Total number of filtered groups"},
            {"Selected: 64318", "Selected: 0", "Total number of selected groups"},
            {"Scanning Groups", "", "", PanelStyle::Text, true}}};

    CommandButton cmdFindNow{*this, "cmdFindNow", "Find Now", {5385, 1260, 1200, 345}};
    CommandButton cmdStop{*this, "cmdStop", "Stop Action", {5385, 1755, 1200, 345}};
    CommandButton Command1{*this, "Command1", "Exit", {5385, 2985, 1200, 345}};

    // The preview strip: three slots, the newest picture in the left one.
    Panel Frame3{*this, "Frame3", {-45, 3345, 6960, 2625}};
    // Each slot: its edge, the picture and, below the buttons, the bare name of the file, with the path in its Tag.
    Panel SSPanel1[3] = {{Frame3, "SSPanel1(0)", {75, 210, 2070, 1695}, PanelEdge::Sunken},
        {Frame3, "SSPanel1(1)", {2340, 210, 2070, 1695}, PanelEdge::Sunken},
        {Frame3, "SSPanel1(2)", {4560, 210, 2070, 1695}, PanelEdge::Sunken}};
    ImageControl Image2[3] = {{SSPanel1[0], "Image2(0)", {15, 15, 2040, 1665}},
        {SSPanel1[1], "Image2(1)", {15, 15, 2040, 1665}}, {SSPanel1[2], "Image2(2)", {15, 15, 2040, 1665}}};
    CommandButton Command2[3] = {{Frame3, "Command2(0)", "View", {90, 1950, 620, 325}},
        {Frame3, "Command2(1)", "View", {2340, 1950, 620, 325}},
        {Frame3, "Command2(2)", "View", {4560, 1950, 620, 325}}};
    CommandButton cmdClear[3] = {{Frame3, "cmdClear(0)", "Clear", {810, 1950, 620, 325}},
        {Frame3, "cmdClear(1)", "Clear", {3075, 1950, 620, 325}},
        {Frame3, "cmdClear(2)", "Clear", {5295, 1950, 620, 325}}};
    CommandButton cmdDelete[3] = {{Frame3, "cmdDelete(0)", "Delete", {1545, 1950, 620, 325}},
        {Frame3, "cmdDelete(1)", "Delete", {3810, 1950, 620, 325}},
        {Frame3, "cmdDelete(2)", "Delete", {6030, 1950, 620, 325}}};
    Label Label2[3] = {{Frame3, "Label2(0)", "<filename>", {150, 2340, 1935, 195}, Alignment::Centre},
        {Frame3, "Label2(1)", "<filename>", {2400, 2340, 1935, 195}, Alignment::Centre},
        {Frame3, "Label2(2)", "<filename>", {4650, 2340, 1935, 195}, Alignment::Centre}};
    // Reads each stored picture, whose path is its Tag; it lies below the strip's lower edge, where nobody sees it.
    ImageControl Picture1{Frame3, "Picture1", {3375, 3075, 1425, 1260}};

    // Holds the picture of the banner and the about box, beyond the right edge.
    ImageControl Image1{*this, "Image1", {9000, 0, 4500, 3000}};

    // The connection, the files found, and the clock.
    StatusBar StatusBar1{*this, "StatusBar1", {0, 6015, 6630, 330},
        {{"Status: Username Required", "Status: Disconnected", connectionToolTip, PanelStyle::Text, true},
            {"Items: 100000", "Items: 0", "Total items found"}, {"Tamarack", "Tamarack"},
            {"22:22:22", "", "Current Time"}, {"", "", "Current Date", PanelStyle::Date}},
        StatusBarPlace::BottomEdge};

    Timer Timer1{std::chrono::milliseconds(15000)}; // the watchdog of a head
    Timer Timer2{std::chrono::milliseconds(2000)}; // holds the banner up, then starts the clock
    Socket TCP1; // the connection to the news server
    AttachmentDecoder UU; // decodes the attachments
};
