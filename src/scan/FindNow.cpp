#include "scan/FindNow.h"

#include "base/Files.h"
#include "platform/Events.h"
#include "session/SessionUse.h"

FindNow::FindNow(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop, GroupScan& newScan)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
    , scan(newScan)
{
    MainForm.cmdFindNow.Click = [this] { cmdFindNow_Click(); };
    MainForm.mnuFindNow.Click = [this] { cmdFindNow_Click(); };
    MainForm.cmdStop.Click = [this] { cmdStop_Click(); };
}

void FindNow::cmdFindNow_Click()
{
    if (MainForm.lstSelectedGroups.ListCount() == 0) {
        desktop.MsgBox("You have not selected any newsgroups yet.\r\n"
                       "You must first filter out the groups you\r\n"
                       "want then double-click them from the\r\n"
                       "'Filtered Groups' sub-tab.  Only groups in\r\n"
                       "the 'Selected Groups' sub-tab will be scanned.",
            "Select Groups");
        return;
    }
    if (!DirExists(MainForm.txtSelectDir.Text())) {
        desktop.MsgBox("The attachment directory you selected where \r\n"
                       "files will be stored is no longer valid.  Please \r\n"
                       "select a new one then try again.",
            "Directory Error");
        MainForm.SSTMain.SetTab(0);
        return;
    }
    if (!Search())
        return;
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}

bool FindNow::Search()
{
    const SessionUse use(Session);
    if (!use)
        return false;
    Session.StopFlag = false;
    if (!Session.TcpConnect())
        return false;
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    scan.ScanGroups(MainForm.lstSelectedGroups);
    return true;
}

void FindNow::cmdStop_Click() { Session.StopFlag = true; }
