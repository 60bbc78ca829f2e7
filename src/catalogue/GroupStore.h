#pragma once

#include "platform/ProgressBar.h"
#include "session/NewsSession.h"

// The list of all groups of a server, lstAllGroups, and the file that keeps it: fetched from the server when the user
// asks for it, brought back from the file otherwise. The file holds the server's reply in double quotes, CR LF behind.
class GroupStore {
public:
    GroupStore(frmTamarack& mainForm, NewsSession& session, Desktop& desktop);

    // The full name of the current server's group file.
    std::string FileName() const;

    // Fills the list from the file behind a banner: tells there what is being done and how far it is.
    void LoadGroupsFromDisk(ProgressBar& progress, Label& activity);

    // "Refresh From Disk". Does nothing while the main form is invisible.
    void cmdRefreshDisk_Click();

private:
    void cmdRefresh_Click();
    void FillGroupList(std::string_view text);
    void ShowEmptyServerMessage();

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
};
