#pragma once

#include "forms/frmTamarack.h"
#include "platform/Settings.h"

// The user name and password that a server may want. The session reads them from the controls; every change in the
// controls goes to the settings at once, under the server's name: section "Servers2", keys "name" ("Authenticate" or
// empty), "name.user" and "name.pass".
class Credentials {
public:
    Credentials(frmTamarack& mainForm, Settings& settings);

    // Shows what is kept for the current server.
    void Load();

    // Removes what is kept for a server.
    void Forget(const std::string& server);

private:
    void chkUserName_Click();
    void txtUserName_Change();
    void txtPassword_Change();

    std::string Kept(std::string_view ending) const;
    void Keep(std::string_view ending, std::string_view value);

    frmTamarack& MainForm;
    Settings& settings;
};
