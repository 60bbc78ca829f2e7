#pragma once

#include "catalogue/GroupStore.h"
#include "catalogue/SelectedGroups.h"
#include "servers/Credentials.h"

struct frmNewsServer;

// The news servers in cboNewsServer, of which one is current. A server is known by its name alone. Settings section
// "Servers": one key for each name, and "Default" with the name to select at the next start.
class ServerList {
public:
    // The settings section with the certificates that the user trusts, by the names of their servers.
    static constexpr std::string_view certificateSection = "Certificates";

    // `freeList` is the address of the page that "Show Free List" opens.
    ServerList(frmTamarack& mainForm, NewsSession& session, Settings& settings, Desktop& desktop,
        SelectedGroups& selectedGroups, GroupStore& groupStore, std::string freeList);

    // Brings the names back and selects the default, or else the first. Without any the user is asked for one; false if
    // they do not give it.
    [[nodiscard]] bool Fill();

    // Remembers the current server for the next start.
    void SaveDefault();

private:
    void cboNewsServer_Click();
    void cmdDeleteServer_Click();

    // Shows the dialog and returns when the user has done with it.
    void cmdAddNewsServer_Click();
    void cmdSave_Click(frmNewsServer& form);
    void CmdFreeList_Click();

    frmTamarack& MainForm;
    NewsSession& Session;
    Settings& settings;
    Desktop& desktop;
    Credentials credentials;
    SelectedGroups& selectedGroups;
    GroupStore& groupStore;
    const std::string freeList;
};
