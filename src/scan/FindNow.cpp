#include "scan/FindNow.h"

#include "base/Files.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"

#include <algorithm>

using namespace std::chrono_literals;

FindNow::FindNow(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop, SearchCriteria& newCriteria,
    AttachmentSaving& newSaving)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
    , criteria(newCriteria)
    , saving(newSaving)
{
    MainForm.cmdFindNow.Click = [this] { cmdFindNow_Click(); };
    MainForm.mnuFindNow.Click = [this] { cmdFindNow_Click(); };
    MainForm.cmdStop.Click = [this] { Session.StopFlag = true; };
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
    progress.Begin();
    Session.StopFlag = false;
    if (!Session.TcpConnect()) {
        progress.End("The server could not be reached.");
        return false;
    }
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    ScanGroups();
    return true;
}

void FindNow::ScanGroups()
{
    ListBox& list = MainForm.lstSelectedGroups;
    Session.StopFlag = false;
    saving.Begin();
    if (list.ListIndex() < 0)
        list.SetListIndex(0);
    Session.RecvBuffer.Clear();
    // Rows that are removed meanwhile do not shorten the walk: what is read past the end is an empty name.
    const int lastRow = list.ListCount() - 1;
    std::string_view obstacle;
    for (int row = std::max(list.ListIndex(), 0); row <= lastRow && obstacle.empty(); ++row) {
        if (ScanGroup(list.List(row)) == AfterGroup::EndRun)
            obstacle = WhyItEnded();
    }
    MainForm.SetCaption(frmTamarack::idleCaption);
    if (obstacle.empty() && MainForm.TCP1.State() != SocketState::Connected)
        obstacle = "The connection was lost.";
    progress.End(obstacle);
}

std::string_view FindNow::WhyItEnded() const
{
    if (saving.LimitOfRunReached())
        return "The limit of files is reached.";
    return Session.ReplyState == Reply::Refused ? "The server refused." : "It was stopped.";
}

FindNow::AfterGroup FindNow::ScanGroup(const std::string& group)
{
    Session.CurrentGroup = group;
    MainForm.SetCaption("Entering group " + Session.CurrentGroup);
    DoEvents();
    if (!Session.CmdGroup(Session.CurrentGroup))
        return AfterGroup::NextRow;
    if (Session.StopFlag) {
        Session.TcpDisconnect();
        return AfterGroup::EndRun;
    }
    const std::int32_t lastInGroup = Session.LastArticle;
    const PointerFile::Lookup pointer
        = ServerFiles::CurrentPointers(MainForm, Session).Find(Session.CurrentGroup, [this] {
              return !Session.StopFlag;
          });
    Session.StartArticle = pointer.article;
    saving.GroupCount = 0;
    if (Session.CmdStat(Session.StartArticle))
        WalkArticles(lastInGroup, pointer.recordNumber);
    if (Session.StopFlag) {
        Session.TcpDisconnect();
        return AfterGroup::EndRun;
    }
    MainForm.SetCaption(Session.CurrentGroup + " -- No more new articles");
    desktop.Sleep(1500ms);
    return AfterGroup::NextRow;
}

void FindNow::WalkArticles(std::int32_t lastInGroup, std::int64_t pointerRecordNumber)
{
    // A server without an article to move to may say so with a reply that counts as a success but names no article,
    // such as 420. In a group that is said to be empty that is the end; elsewhere it is once it has not moved twice in
    // a row. What the server says of the group's range decides nothing else: it may be wrong.
    constexpr std::int32_t noArticle = -1;
    const bool saidToBeEmpty = Session.FirstArticle > lastInGroup;
    int timesNotMoved = 0;
    std::int32_t before = Session.StartArticle;
    progress.EnterGroup(before, lastInGroup);
    for (;;) {
        Session.CurrentArticle = noArticle;
        const bool mayHaveMoved = Session.CmdNext() && !Session.StopFlag;
        const bool namesNone = Session.CurrentArticle == noArticle;
        if (namesNone)
            Session.CurrentArticle = before;
        if (!mayHaveMoved)
            return;
        timesNotMoved = Session.CurrentArticle == before ? timesNotMoved + 1 : 0;
        if (timesNotMoved == 2 || (namesNone && saidToBeEmpty))
            return;
        before = Session.CurrentArticle;
        const ArticleInHand article{Session.CurrentArticle, lastInGroup, Session.CurrentGroup};
        progress.LookAt(article.number);
        MainForm.SetCaption(article.Caption("Scanning "));
        // Before the article is looked at: an article that the program stops on counts as read. A pointer that cannot
        // be written only makes the next search start earlier.
        (void)ServerFiles::CurrentPointers(MainForm, Session)
            .Write(pointerRecordNumber, Session.CurrentGroup, article.number);
        if (criteria.ArticleMatches(article.number) && !Session.StopFlag) {
            MainForm.SetCaption(article.Caption("Getting "));
            const std::string body = Session.CmdBody(article.number);
            if (!Session.StopFlag) {
                const AfterSaving after = saving.Save(article, body);
                progress.Fetched(body.size(), saving.TotalCount);
                if (after == AfterSaving::GroupLimitReached)
                    return;
            }
        }
        if (Session.StopFlag)
            return;
        DoEvents();
    }
}
