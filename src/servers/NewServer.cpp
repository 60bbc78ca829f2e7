#include "servers/NewServer.h"

#include "base/Files.h"
#include "base/Text.h"
#include "catalogue/GroupCounts.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"
#include "servers/ServerSettings.h"
#include "servers/frmNewsServer.h"

#include <algorithm>

namespace {

// The page that the address leads to, in the program's own help.
constexpr int freeListTopic = 1000;

// The system itself would take a control character.
bool CanBeFileName(std::string_view name)
{
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    return name.find('/') == std::string_view::npos && std::none_of(name.begin(), name.end(), isControl);
}

}

NewServer::NewServer(
    frmTamarack& mainForm, NewsSession& session, Settings& newSettings, Desktop& newDesktop, std::string newFreeList)
    : MainForm(mainForm)
    , Session(session)
    , settings(newSettings)
    , desktop(newDesktop)
    , freeList(std::move(newFreeList))
{
}

void NewServer::Show()
{
    frmNewsServer form;
    Form_Load(form);
    form.Unload = [&] { Form_Unload(form); };
    form.cmdSave.Click = [&] { cmdSave_Click(form); };
    form.cmdCancel.Click = [&] { Form_Unload(form); };
    form.cmdFreeList.Click = [&] { CmdFreeList_Click(); };
    form.txtNewsServer.GotFocus = [&] { form.txtNewsServer.SelectAll(); };
    form.ShowModal();
}

void NewServer::Form_Load(frmNewsServer& form)
{
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
}

void NewServer::Form_Unload(frmNewsServer& form)
{
    form.SetVisible(false);
    DoEvents();
}

void NewServer::cmdSave_Click(frmNewsServer& form)
{
    const std::string name(Trim(form.txtNewsServer.Text()));
    if (!name.empty()) {
        const std::string groupFile = ServerFiles::Group(Session.AppDir, name);
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
        settings.SaveSetting(ServerSettings::section, name, "1");
        settings.SaveSetting(ServerSettings::section, ServerSettings::defaultKey, name);
    }
    Form_Unload(form);
}

void NewServer::CmdFreeList_Click()
{
    if (!desktop.ShellOpen(freeList))
        Raise(HelpContext, freeListTopic);
}
