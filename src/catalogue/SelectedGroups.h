#pragma once

#include "session/NewsSession.h"

// The groups that a search goes through, lstSelectedGroups: how they get into the list, out of it and into another
// order, how far each has been read, as far as that is set by hand, and the file that keeps the list for its server:
// one name to a line, each line ended by CR LF, without any quoting.
class SelectedGroups {
public:
    SelectedGroups(frmTamarack& mainForm, NewsSession& session, Desktop& desktop);

    // Replaces the list with the file of the current server. A missing file leaves it empty. Lets events through.
    void LoadSelectedGroups();

    // Writes the list to the file of the current server. A failure leaves the old file, and a file of which the list
    // does not hold all, as it could not be read or is still being read, is left alone.
    void SaveSelectedGroups();

private:
    void BindMenus();

    // The list is changed in memory only.
    void lstAllGroups_DblClick();
    void lstFilteredGroups_DblClick();
    void lstSelectedGroups_DblClick();
    void cmdSavePicks_Click();
    void Command3_Click();
    void cmdClearAll_Click();
    void cmdClearSelected_Click();
    void MyUpDown_Click(int index);

    // "Set Pointer" and "Reset Group".
    void Command4_Click();
    void cmdResetGroup_Click();

    // The group in the row with the focus.
    std::string CurrentGroup() const;
    std::string FileName() const;

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
    std::string unreadFile; // the file of which the list does not hold all, if there is one
    int loads = 0;
};
