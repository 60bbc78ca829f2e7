#include "forms/frmTamarack.h"

const std::string_view frmTamarack::idleCaption = "Tamarack -- " TAMARACK_HOMEPAGE;

frmTamarack::frmTamarack()
    : Form("frmTamarack", idleCaption, {.clientWidth = 6630, .clientHeight = 6345})
{
    mnuInteractiveDownload.SetChecked(false);
    mnuSizeableViewer.SetChecked(false);
    mnuSlideShow.SetChecked(false);

    for (Control* control :
        std::initializer_list<Control*>{&txtLimitPictures, &udLimitPictures, &lblPerNewsGroup, &txtMaxToDownload,
            &udMaxToDownload, &lblUserName, &txtUserName, &lblPassword, &txtPassword, &cmdSavePicks})
        control->SetEnabled(false);
    Label1.SetVisible(false);
    Frame3.SetVisible(false);
    Image1.SetPicture(Bitmap::Banner());
    for (Label& fileName : Label2)
        fileName.KeepToOneLine();

    Label3.SetBuddy(txtNamed);
    lblSizeIs.SetBuddy(cboSizeIs);
    lblUseThisServerToPerformTheQuery.SetBuddy(cboNewsServer);
    lblPort.SetBuddy(txtPort);
    lblUserName.SetBuddy(txtUserName);
    lblPassword.SetBuddy(txtPassword);
    lblNewsGroups.SetBuddy(txtNewsGroups);
    txtSelectDir.SetAccessibleName("Destination");
    txtKB.SetAccessibleName("Total Lines");
    txtLimitPictures.SetAccessibleName("Limit the Number of Pictures to");
    txtMaxToDownload.SetAccessibleName("Maximum Files to Download");
    txtManual.SetAccessibleName("Group to add");
    lstSelectedGroups.SetAccessibleName("Selected Groups");
    lstFilteredGroups.SetAccessibleName("Filtered Groups");
    lstAllGroups.SetAccessibleName("All Groups");

    cmdFindNow.SetToolTip("Search the selected groups, from the highlighted row on, for new articles");
    cmdFindNow.SetShortcut("Alt+N");
    cmdStop.SetToolTip("End the search, refresh or filter that is going on");
    cmdStop.SetShortcut("Alt+S");
    Command1.SetToolTip("Save the settings and end the program");
    Command1.SetShortcut("Alt+X");
    cmdSelectDir.SetToolTip("Choose the directory for the attachments");
    txtSelectDir.SetToolTip("Attachments are stored here");
    txtNamed.SetToolTip("Further parts of names to look for, such as .png;holiday");
    txtKB.SetToolTip("Number of lines");
    txtManual.SetToolTip("Name of a group to add");
    txtNewsGroups.SetToolTip("Parts of group names, separated by semi-colons");
    cmdAndFilter.SetToolTip("Keep the groups that hold every term");
    cmdOrFilter.SetToolTip("Keep the groups that hold any term");
    chkGroupSubDir.SetToolTip("In there, a newer file replaces an older one of its name");
    for (Control* limit : std::initializer_list<Control*>{&chkLimitPictures, &txtLimitPictures})
        limit->SetToolTip("After so many files, go on with the next group");
    for (Control* limit : std::initializer_list<Control*>{&chkMaximumFiles, &txtMaxToDownload})
        limit->SetToolTip("After so many files, end the search");
    cboNewsServer.SetToolTip("Choosing another one drops changes to the selected groups");
    txtPort.SetToolTip("563 and 443 are encrypted, 119 is not");
    txtUserName.SetToolTip("At most 20 characters");
    txtPassword.SetToolTip("At most 20 characters");
    lstSelectedGroups.SetToolTip("Searched from the highlighted row on");
    cmdClearAll.SetToolTip("Take all groups out of the list");
    cmdClearSelected.SetToolTip("Take the highlighted groups out of the list");
    cmdRefresh.SetToolTip("Fetch the list of groups from the server");
    cmdRefreshDisk.SetToolTip("Read the list of groups that was fetched last");
    for (CommandButton& button : cmdDelete)
        button.SetToolTip("Delete the file of the picture, without a question");
    cmdSavePicks.SetToolTip("Move the highlighted groups to the selected groups");
    cmdResetGroup.SetToolTip("Read the highlighted group from its start again");
    Command4.SetToolTip("Set how far the highlighted group has been read");

    txtManual.EnterPresses(Command3);
    txtNewsGroups.EnterPresses(cmdAndFilter);

    // The step to the top comes first on screen.
    Control::SetTabOrder({&lstSelectedGroups, &MyUpDown[2]});
    // Slot by slot.
    Control::SetTabOrder({&Command2[0], &cmdClear[0], &cmdDelete[0], &Command2[1], &cmdClear[1], &cmdDelete[1],
        &Command2[2], &cmdClear[2], &cmdDelete[2]});
    for (int slot = 0; slot < 3; ++slot) {
        const std::string picture = "picture " + std::to_string(slot + 1);
        SSPanel1[slot].SetAccessibleName("Room of " + picture);
        Image2[slot].SetAccessibleName(picture);
        Command2[slot].SetAccessibleName("View " + picture);
        cmdClear[slot].SetAccessibleName("Clear " + picture);
        cmdDelete[slot].SetAccessibleName("Delete " + picture);
    }

    struct Topic {
        int number;
        std::initializer_list<Control*> controls;
    };
    for (const Topic& topic : {Topic{140, {&txtNamed}}, Topic{150, {&Frame2}}, Topic{160, {&cmdSelectDir}},
             Topic{260, {&cboNewsServer}}, Topic{270, {&txtPort}}, Topic{280, {&chkUserName}},
             Topic{290, {&txtUserName}}, Topic{300, {&txtPassword}}, Topic{330, {&cmdRefresh, &cmdRefreshDisk}},
             Topic{340, {&lstAllGroups}}, Topic{380, {&lstFilteredGroups}}, Topic{400, {&lstSelectedGroups}},
             Topic{430, {&Command1}}, Topic{440, {&cmdFindNow}}, Topic{500, {&cboSizeIs, &txtKB, &SpinButton1}},
             Topic{510, {&chkLimitPictures, &txtLimitPictures, &udLimitPictures}},
             Topic{520, {&chkMaximumFiles, &txtMaxToDownload, &udMaxToDownload}}, Topic{540, {&cmdDeleteServer}},
             Topic{550, {&cmdAddNewsServer}}, Topic{560, {&txtManual, &txtNewsGroups}}, Topic{570, {&cmdAndFilter}},
             Topic{580, {&cmdOrFilter}}, Topic{590, {&cmdSavePicks}},
             Topic{600, {&Command3, &cmdClearAll, &MyUpDown[0], &MyUpDown[1], &MyUpDown[2], &MyUpDown[3]}},
             Topic{610, {&Command4, &cmdResetGroup, &cmdClearSelected}}}) {
        for (Control* control : topic.controls)
            control->SetHelpTopic(topic.number);
    }
    nameAndLocation.SetFallbackTopic(1010);
    SSTMain.Page(1).SetFallbackTopic(1020);
    SSTMain.Page(2).SetFallbackTopic(1030);
    SSTMain.Page(3).SetFallbackTopic(1040);
    selectedGroups.SetFallbackTopic(1041);
    filteredGroups.SetFallbackTopic(1042);
    allGroups.SetFallbackTopic(1043);
    Frame3.SetFallbackTopic(1050);
}
