#pragma once

#include "catalogue/GroupStore.h"
#include "catalogue/SelectedGroups.h"
#include "platform/Settings.h"
#include "servers/Credentials.h"
#include "servers/NewServer.h"
#include "session/NewsSession.h"

// The news servers in cboNewsServer, of which one is current. A server is known by its name alone. Settings section
// "Servers": one key for each name, and "Default" with the name to select at the next start.
class ServerList {
public:
    ServerList(frmTamarack& mainForm, NewsSession& session, Settings& settings, Desktop& desktop,
        Credentials& credentials, NewServer& newServer, SelectedGroups& selectedGroups, GroupStore& groupStore);

    // Brings the stored names back and selects the default, or else the first. With no name stored the user is asked
    // for one; false if they do not give any.
    [[nodiscard]] bool Fill();

    // Remembers the current server for the next start.
    void SaveDefault();

private:
    void cboNewsServer_Click();
    void cmdAddNewsServer_Click();
    void cmdDeleteServer_Click();
    [[nodiscard]] bool AskForFirst();

    frmTamarack& MainForm;
    NewsSession& Session;
    Settings& settings;
    Desktop& desktop;
    Credentials& credentials;
    NewServer& newServer;
    SelectedGroups& selectedGroups;
    GroupStore& groupStore;
};
