#include "servers/ServerList.h"

#include "base/Files.h"
#include "base/Text.h"
#include "catalogue/GroupPanels.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"
#include "platform/TextArea.h"

#include <algorithm>

// Asks for the name of a news server.
struct frmNewsServer : Form {
    frmNewsServer()
        : Form("frmNewsServer", "Add News Server", {.clientWidth = 5160, .clientHeight = 3375})
    {
        SetFallbackTopic(550);
        lblNewsServerName.SetBuddy(txtNewsServer);
        txtText1.SetAccessibleName("Help");
        cmdFreeList.SetToolTip("How to find a news server");
        SetDialogButtons(cmdSave, cmdCancel);
        txtNewsServer.SetFocus();
    }

    Label lblNewsServerName{*this, "lblNewsServerName", "News Server Name:", {120, 120, 1995, 330}};
    TextBox txtNewsServer{*this, "txtNewsServer", {2145, 120, 2895, 330}, {.text = "news.example.com"}};
    // How to find one's news server.
    TextArea txtText1{*this, "txtText1", {120, 570, 4920, 2220}};
    CommandButton cmdSave{*this, "cmdSave", "Save", {120, 2910, 1440, 345}};
    CommandButton cmdCancel{*this, "cmdCancel", "Cancel", {1680, 2910, 1440, 345}};
    CommandButton cmdFreeList{*this, "cmdFreeList", "Show Free List", {3240, 2910, 1800, 345}};
};

namespace {

constexpr std::string_view section = "Servers";
constexpr std::string_view defaultKey = "Default";

// The page that the address leads to, in the program's own help, for a system that cannot open it.
constexpr int freeListTopic = 1000;

// The system itself would take a control character.
bool CanBeFileName(std::string_view name)
{
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    return name.find('/') == std::string_view::npos && std::none_of(name.begin(), name.end(), isControl);
}

void Unload(frmNewsServer& form)
{
    form.SetVisible(false);
    DoEvents();
}

}

ServerList::ServerList(frmTamarack& mainForm, NewsSession& session, Settings& newSettings, Desktop& newDesktop,
    SelectedGroups& newSelectedGroups, GroupStore& newGroupStore, std::string newFreeList)
    : MainForm(mainForm)
    , Session(session)
    , settings(newSettings)
    , desktop(newDesktop)
    , credentials(mainForm, newSettings)
    , selectedGroups(newSelectedGroups)
    , groupStore(newGroupStore)
    , freeList(std::move(newFreeList))
{
    MainForm.cboNewsServer.Click = [this] { cboNewsServer_Click(); };
    MainForm.cmdAddNewsServer.Click = [this] { cmdAddNewsServer_Click(); };
    MainForm.cmdDeleteServer.Click = [this] { cmdDeleteServer_Click(); };
}

bool ServerList::Fill()
{
    ComboBox& servers = MainForm.cboNewsServer;
    const std::string kept = settings.GetSetting(section, defaultKey);
    const std::string_view preselected = Trim(kept);
    for (const std::string& key : settings.GetAllSettings(section)) {
        if (key == defaultKey)
            continue;
        const std::string_view name = Trim(key);
        servers.AddItem(name);
        if (!name.empty() && name == preselected)
            servers.SetListIndex(servers.ListCount() - 1);
    }
    DoEvents();
    while (servers.ListCount() == 0) {
        cmdAddNewsServer_Click();
        if (servers.ListCount() == 0
            && desktop.MsgBox("You must enter a news server!", "Error", MessageButtons::OkCancel)
                == MessageAnswer::Cancel)
            return false;
    }
    if (servers.Text().empty())
        servers.SetListIndex(0);
    return true;
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

void ServerList::cmdAddNewsServer_Click()
{
    frmNewsServer form;
    form.CentreOnForm(MainForm);
    form.txtText1.SetText(
        "Please enter your news server address.  "
        "It is usually the word news, a dot, the name of your provider, a dot and a top-level domain: "
        "with a provider named Birchwood it could be news.birchwood.example.  "
        "If you already get news through Netscape "
        "check the options under News server or Discussion server "
        "for the news server name.  If your an AOL user or can't "
        "find out what your server is, Click the 'Show Free List' "
        "button for a list of public servers or goto: "
        + freeList);
    form.Unload = [&] { Unload(form); };
    form.cmdSave.Click = [&] { cmdSave_Click(form); };
    form.cmdCancel.Click = [&] { Unload(form); };
    form.cmdFreeList.Click = [&] { CmdFreeList_Click(); };
    form.txtNewsServer.GotFocus = [&] { form.txtNewsServer.SelectAll(); };
    form.ShowModal();
}

void ServerList::cmdSave_Click(frmNewsServer& form)
{
    const std::string name(Trim(form.txtNewsServer.Text()));
    if (!name.empty()) {
        const std::string groupFile = Session.AppDir + ServerFiles::groupPrefix + name;
        if (!CanBeFileName(name) || ReplaceFile(groupFile, {})) {
            desktop.MsgBox("The filename \r\n" + groupFile
                    + "\r\ncould not be saved.  Please make sure you have\r\n"
                      "enough space, or that the filename does not contain\r\n"
                      "invalid charaters.",
                "File write error");
            return;
        }
        MainForm.cboNewsServer.AddItem(name);
        MainForm.cboNewsServer.SetListIndex(MainForm.cboNewsServer.ListCount() - 1);
        ClearGroupLists(MainForm);
        settings.SaveSetting(section, name, "1");
        settings.SaveSetting(section, defaultKey, name);
    }
    Unload(form);
}

void ServerList::CmdFreeList_Click()
{
    if (!desktop.ShellOpen(freeList))
        Raise(Form::HelpKey, freeListTopic);
}

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
    for (const char* prefix : {ServerFiles::groupPrefix, ServerFiles::pointerPrefix, ServerFiles::selectedPrefix}) {
        if (const std::string file = Session.AppDir + prefix + name; FileExists(file))
            (void)DeleteFile(file);
    }
    settings.DeleteSetting(section, name);
    credentials.Forget(name);
    settings.DeleteSetting(certificateSection, name);
    servers.RemoveItem(servers.ListIndex());
    ClearGroupLists(MainForm);
    Session.TcpDisconnect(); // with the last server nobody else does
    if (servers.ListCount() > 0) {
        servers.SetListIndex(0);
        SaveDefault();
    } else {
        MainForm.chkUserName.SetValue(0);
        MainForm.txtUserName.SetText("");
        MainForm.txtPassword.SetText("");
    }
}
