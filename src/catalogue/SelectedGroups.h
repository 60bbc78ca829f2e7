#pragma once

#include "session/NewsSession.h"

// The working list of a search, lstSelectedGroups, and the file that keeps it for its server: one name to a line, each
// line ended by CR LF.
class SelectedGroups {
public:
    SelectedGroups(frmTamarack& mainForm, NewsSession& session);

    // Replaces the list with the file of the current server. A missing file leaves it empty.
    void LoadSelectedGroups();

    // Writes the list to the file of the current server. A failure leaves the old file, and so does an end of the
    // program while the list is only half read.
    void SaveSelectedGroups();

private:
    std::string FileName() const;

    frmTamarack& MainForm;
    NewsSession& Session;
    bool loading = false;
};
