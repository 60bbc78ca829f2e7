#pragma once

#include "catalogue/GroupStore.h"
#include "catalogue/SelectedGroups.h"
#include "platform/Settings.h"
#include "servers/Credentials.h"
#include "session/NewsSession.h"

// The news servers in cboNewsServer, of which one is current. A server is known by its name alone. Settings section
// "Servers": one key for each name, and "Default" with the name to select at the next start.
class ServerList {
public:
    ServerList(frmTamarack& mainForm, NewsSession& session, Settings& settings, Credentials& credentials,
        SelectedGroups& selectedGroups, GroupStore& groupStore);

    // Brings the stored names back and selects the default, or else the first.
    void Fill();

    // Remembers the current server for the next start.
    void SaveDefault();

private:
    void cboNewsServer_Click();

    frmTamarack& MainForm;
    NewsSession& Session;
    Settings& settings;
    Credentials& credentials;
    SelectedGroups& selectedGroups;
    GroupStore& groupStore;
};
