#include "servers/ServerList.h"

#include "base/Files.h"
#include "base/Text.h"
#include "catalogue/GroupCounts.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"
#include "servers/ServerSettings.h"

using namespace ServerSettings;

ServerList::ServerList(frmTamarack& mainForm, NewsSession& session, Settings& newSettings, Desktop& newDesktop,
    Credentials& newCredentials, NewServer& newNewServer, SelectedGroups& newSelectedGroups, GroupStore& newGroupStore)
    : MainForm(mainForm)
    , Session(session)
    , settings(newSettings)
    , desktop(newDesktop)
    , credentials(newCredentials)
    , newServer(newNewServer)
    , selectedGroups(newSelectedGroups)
    , groupStore(newGroupStore)
{
    MainForm.cboNewsServer.Click = [this] { cboNewsServer_Click(); };
    MainForm.cmdAddNewsServer.Click = [this] { cmdAddNewsServer_Click(); };
    MainForm.cmdDeleteServer.Click = [this] { cmdDeleteServer_Click(); };
}

bool ServerList::Fill()
{
    ComboBox& servers = MainForm.cboNewsServer;
    const std::string stored = settings.GetSetting(section, defaultKey);
    const std::string_view preselected = Trim(stored);
    for (const std::string& key : settings.GetAllSettings(section)) {
        if (key == defaultKey)
            continue;
        const std::string_view name = Trim(key);
        servers.AddItem(name);
        if (!name.empty() && name == preselected)
            servers.SetListIndex(servers.ListCount() - 1);
    }
    DoEvents();
    if (servers.ListCount() == 0)
        return AskForFirst();
    if (servers.Text().empty())
        servers.SetListIndex(0);
    return true;
}

bool ServerList::AskForFirst()
{
    while (true) {
        newServer.Show();
        if (MainForm.cboNewsServer.ListCount() > 0) {
            MainForm.cboNewsServer.SetListIndex(0);
            return true;
        }
        if (desktop.MsgBox("You must enter a news server!", "Error", MessageButtons::OkCancel) == MessageAnswer::Cancel)
            return false;
    }
}

void ServerList::SaveDefault() { settings.SaveSetting(section, defaultKey, MainForm.cboNewsServer.Text()); }

// The one place where the program changes its server.
void ServerList::cboNewsServer_Click()
{
    credentials.Load();
    Session.TcpDisconnect();
    selectedGroups.LoadSelectedGroups();
    DoEvents();
    if (MainForm.chkAutoLoad.Value() == 1)
        groupStore.cmdRefreshDisk_Click();
    MainForm.lstFilteredGroups.Clear();
}

void ServerList::cmdAddNewsServer_Click() { newServer.Show(); }

void ServerList::cmdDeleteServer_Click()
{
    ComboBox& servers = MainForm.cboNewsServer;
    if (servers.ListCount() == 0)
        return;
    const std::string name = servers.Text();
    if (desktop.MsgBox("Are you sure you want to delete \r\n" + name + " from the list?", "Delete News Server?",
            MessageButtons::YesNo)
        != MessageAnswer::Yes)
        return;
    for (const auto& fileOf : {ServerFiles::Group, ServerFiles::Pointers, ServerFiles::Selected}) {
        if (const std::string file = fileOf(Session.AppDir, name); FileExists(file))
            (void)DeleteFile(file);
    }
    const std::string key(Trim(name));
    settings.DeleteSetting(section, key);
    credentials.Forget(key);
    servers.RemoveItem(servers.ListIndex());
    ClearGroupLists(MainForm);
    // Nobody else ends the session with the last server.
    Session.TcpDisconnect();
    if (servers.ListCount() > 0) {
        servers.SetListIndex(0);
        SaveDefault();
    } else {
        MainForm.chkUserName.SetValue(0);
        MainForm.txtUserName.SetText("");
        MainForm.txtPassword.SetText("");
    }
}
