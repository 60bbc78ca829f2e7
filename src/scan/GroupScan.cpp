#include "scan/GroupScan.h"

#include "catalogue/ServerFiles.h"
#include "platform/Events.h"

#include <algorithm>

using namespace std::chrono_literals;

GroupScan::GroupScan(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop, ArticleMatching& newMatching,
    AttachmentStoring& newStore)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
    , matching(newMatching)
    , store(newStore)
{
}

void GroupScan::ScanGroups(ListBox& list)
{
    Session.StopFlag = false;
    store.Begin();
    MainForm.StatusBar1.Panels(2).SetText("Items: 0");
    if (list.ListIndex() < 0)
        list.SetListIndex(0);
    Session.RecvBuffer.Clear();
    Session.SearchPos = 1;
    // Rows that are removed meanwhile do not shorten the walk: what is read past the end is an empty name.
    const int lastRow = list.ListCount() - 1;
    for (int row = std::max(list.ListIndex(), 0); row <= lastRow; ++row) {
        if (ScanGroup(list.List(row)) == AfterGroup::EndRun)
            break;
    }
    MainForm.SetCaption(frmTamarack::idleCaption);
}

GroupScan::AfterGroup GroupScan::ScanGroup(const std::string& group)
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
    FindPointer();
    store.GroupCount = 0;
    if (Session.CmdStat(Session.StartArticle))
        WalkArticles(lastInGroup);
    if (Session.StopFlag) {
        Session.TcpDisconnect();
        return AfterGroup::EndRun;
    }
    MainForm.SetCaption(Session.CurrentGroup + " -- No more new articles");
    desktop.Sleep(1500ms);
    return AfterGroup::NextRow;
}

void GroupScan::WalkArticles(std::int32_t lastInGroup)
{
    // A server without an article to move to may say so with a reply that counts as a success but names no article,
    // such as 420. In a group that is said to be empty that is the end; elsewhere it is once it has not moved twice in
    // a row. What the server says of the group's range decides nothing else: it may be wrong.
    constexpr std::int32_t noArticle = -1;
    const bool saidToBeEmpty = Session.FirstArticle > lastInGroup;
    int timesNotMoved = 0;
    std::int32_t before = Session.StartArticle;
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
        const ArticleInHand article{Session.CurrentArticle, lastInGroup};
        MainForm.SetCaption(article.Caption("Scanning ", Session.CurrentGroup));
        // Before the article is looked at: an article that the program stops on counts as read.
        WritePointer(article.number);
        if (matching.ArticleMatches(article.number) && !Session.StopFlag) {
            MainForm.SetCaption(article.Caption("Getting ", Session.CurrentGroup));
            const std::string body = Session.CmdBody(article.number);
            if (!Session.StopFlag && store.Store(article, body) == AfterStoring::GroupLimitReached)
                return;
        }
        if (Session.StopFlag) {
            Session.TcpDisconnect();
            return;
        }
        DoEvents();
    }
}

PointerFile GroupScan::Pointers() const
{
    return PointerFile(ServerFiles::Pointers(Session.AppDir, MainForm.cboNewsServer.Text()));
}

void GroupScan::FindPointer()
{
    const PointerFile::Lookup lookup = Pointers().Find(Session.CurrentGroup, [this] { return !Session.StopFlag; });
    pointerRecordNumber = lookup.recordNumber;
    Session.StartArticle = lookup.article;
}

void GroupScan::WritePointer(std::int32_t article)
{
    // A pointer that cannot be written only makes the next search start earlier.
    (void)Pointers().Write(pointerRecordNumber, Session.CurrentGroup, article);
}
