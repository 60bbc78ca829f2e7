#include "servers/ServerList.h"

#include "platform/Events.h"
#include "platform/Text.h"

namespace {

constexpr std::string_view section = "Servers";
constexpr std::string_view defaultKey = "Default";

}

ServerList::ServerList(frmTamarack& mainForm, NewsSession& session, Settings& newSettings, Credentials& newCredentials,
    SelectedGroups& newSelectedGroups, GroupStore& newGroupStore)
    : MainForm(mainForm)
    , Session(session)
    , settings(newSettings)
    , credentials(newCredentials)
    , selectedGroups(newSelectedGroups)
    , groupStore(newGroupStore)
{
    MainForm.cboNewsServer.Click = [this] { cboNewsServer_Click(); };
}

void ServerList::Fill()
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
    if (servers.ListCount() > 0 && servers.Text().empty())
        servers.SetListIndex(0);
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
