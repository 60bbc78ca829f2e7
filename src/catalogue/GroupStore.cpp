#include "catalogue/GroupStore.h"

#include "base/Files.h"
#include "catalogue/GroupPanels.h"
#include "catalogue/GroupText.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"

#include <algorithm>
#include <limits>

namespace {

// More than a user can look through. It is looked at now and then, so a list may run over it a little.
constexpr int mostGroups = 32000;

}

GroupStore::GroupStore(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
{
    MainForm.cmdRefresh.Click = [this] { cmdRefresh_Click(); };
    MainForm.cmdRefreshDisk.Click = [this] { cmdRefreshDisk_Click(); };
    Session.GroupListArrived = [this](const std::string& text) {
        FillGroupList(text);
        // A failure leaves the old file; the list stands all the same.
        (void)ReplaceFile(FileName(), {"\"", text, "\"\r\n"});
    };
}

std::string GroupStore::FileName() const { return ServerFiles::Current(ServerFiles::groupPrefix, MainForm, Session); }

void GroupStore::FillGroupList(std::string_view text)
{
    constexpr int progressInterval = 200;
    ListBox& list = MainForm.lstAllGroups;
    ShowActivity(MainForm, "Filling List");
    ShowTotalCount(MainForm);
    Session.StopFlag = false;
    list.SetVisible(false);
    MainForm.Label1.SetVisible(true);
    int progress = 0;
    while (!text.empty()) {
        if (const std::string_view name = TakeGroup(text); !name.empty())
            list.AddItem(name);
        if (progress > progressInterval) {
            ShowTotalCount(MainForm);
            progress = 0;
            DoEvents();
            if (list.ListCount() > mostGroups)
                break;
        }
        ++progress;
        if (Session.StopFlag) {
            Session.TcpDisconnect();
            break;
        }
    }
    MainForm.Label1.SetVisible(false);
    list.SetVisible(true);
    ShowTotalCount(MainForm);
    ShowActivity(MainForm, "");
}

void GroupStore::cmdRefresh_Click()
{
    const SessionUse use(Session);
    if (!use)
        return;
    const auto wakefulness = desktop.KeepAwake(KeptAwake::Computer, "Fetching the list of news groups");
    Session.StopFlag = false;
    if (Session.TcpConnect()) {
        MainForm.SetMousePointer(MousePointer::ArrowHourglass);
        MainForm.lstAllGroups.Clear();
        ShowTotalCount(MainForm);
        ShowActivity(MainForm, "Scanning Groups ");
        DoEvents();
        Session.CmdList();
        ShowActivity(MainForm, "");
        ShowTotalCount(MainForm);
        DoEvents();
    } else {
        Session.ShowStatus("Error Connecting");
        Session.TcpDisconnect();
    }
    MainForm.SetMousePointer(MousePointer::Default);
}

void GroupStore::cmdRefreshDisk_Click()
{
    const SessionUse use(Session);
    if (!use || !MainForm.Visible())
        return;
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    MainForm.lstAllGroups.Clear();
    ShowTotalCount(MainForm);
    if (MainForm.cboNewsServer.ListCount() == 0)
        desktop.MsgBox("You must setup a news server!", "Error", MessageButtons::OkCancel);
    else if (SequentialInput file(FileName()); file.Length() < 1)
        ShowEmptyServerMessage();
    else
        FillGroupList(file.ReadQuotedField());
    MainForm.SetMousePointer(MousePointer::Default);
}

void GroupStore::LoadGroupsFromDisk(ProgressBar& progressBar, Label& activity)
{
    constexpr int progressInterval = 400;
    ListBox& list = MainForm.lstAllGroups;
    activity.SetCaption("Loading groups from Disk...");
    SequentialInput file(FileName());
    if (file.Length() < 1) {
        ShowEmptyServerMessage();
        return;
    }
    const auto inRange = [](std::size_t position) {
        return static_cast<int>(std::min<std::size_t>(position, std::numeric_limits<int>::max()));
    };
    progressBar.SetRange(1, inRange(file.Length()));
    progressBar.SetValue(1);
    list.SetVisible(false);
    int progress = 0;
    // A sound file has one field. A quotation mark that a server has sent makes one of each line behind it.
    for (int fields = 0; !file.AtEnd() && fields <= mostGroups && list.ListCount() <= mostGroups; ++fields) {
        const bool shown = fields % progressInterval == 0;
        if (shown) {
            activity.SetCaption("Loading groups from Disk...");
            DoEvents();
        }
        const std::string_view field = file.ReadQuotedField();
        std::string_view rest = field;
        if (shown)
            activity.SetCaption("Filling list box...");
        while (!rest.empty()) {
            if (const std::string_view name = TakeGroup(rest); !name.empty())
                list.AddItem(name);
            if (progress > progressInterval) {
                progressBar.SetValue(inRange(field.size() - rest.size() + 1));
                progress = 0;
                DoEvents();
                if (list.ListCount() > mostGroups)
                    break;
            }
            ++progress;
        }
    }
    list.SetVisible(true);
    progressBar.SetValue(inRange(file.Length()));
    ShowTotalCount(MainForm);
}

void GroupStore::ShowEmptyServerMessage()
{
    desktop.MsgBox("The Selected News Server is empty.\r\n"
                   "You will need to REFRESH the groups\r\n"
                   "from the NETWORK for this server.  Go to the \r\n"
                   "News Groups tab to do this.",
        "The Tamarack");
}
