#pragma once

#include "session/NewsSession.h"

// The working list of a search, lstSelectedGroups, and the file that keeps it for its server: one name to a line, each
// line ended by CR LF, without any quoting.
class SelectedGroups {
public:
    SelectedGroups(frmTamarack& mainForm, NewsSession& session);

    // Replaces the list with the file of the current server. A missing file leaves it empty.
    void LoadSelectedGroups();

    // Writes the list to the file of the current server. A failure leaves the old file, and a file of which the list
    // does not hold all, as it could not be read or is still being read, is left alone.
    void SaveSelectedGroups();

private:
    std::string FileName() const;

    frmTamarack& MainForm;
    NewsSession& Session;
    std::string unreadFile; // the file of which the list does not hold all, if there is one
    int loads = 0;
};
