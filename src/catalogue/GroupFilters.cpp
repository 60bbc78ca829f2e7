#include "catalogue/GroupFilters.h"

#include "base/Text.h"
#include "catalogue/GroupPanels.h"
#include "platform/Events.h"

GroupFilters::GroupFilters(frmTamarack& mainForm, NewsSession& session)
    : MainForm(mainForm)
    , Session(session)
{
    MainForm.cmdAndFilter.Click = [this] { cmdAndFilter_Click(); };
    MainForm.cmdOrFilter.Click = [this] { cmdOrFilter_Click(); };
}

bool GroupFilters::Begin(int run, std::vector<std::string>& terms)
{
    Session.StopFlag = false;
    ShowActivity(MainForm, "Filtering Groups");
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    if (run != runs)
        return false;
    terms = TrimmedParts(Trim(MainForm.txtNewsGroups.Text()), ';');
    if (Session.StopFlag && !terms.empty()) {
        Session.TcpDisconnect();
        return false;
    }
    std::erase(terms, "");
    MainForm.lstFilteredGroups.Clear();
    ShowFilteredCount(MainForm);
    allGroupsRevision = MainForm.lstAllGroups.Revision();
    filteredTimesCleared = MainForm.lstFilteredGroups.TimesCleared();
    return true;
}

void GroupFilters::End()
{
    ShowActivity(MainForm, "");
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
    MainForm.cmdSavePicks.SetEnabled(MainForm.lstFilteredGroups.ListCount() > 0);
}

bool GroupFilters::GoesOn(int run) const
{
    return run == runs && MainForm.lstAllGroups.Revision() == allGroupsRevision
        && MainForm.lstFilteredGroups.TimesCleared() == filteredTimesCleared;
}

void GroupFilters::cmdAndFilter_Click()
{
    const int run = ++runs;
    std::vector<std::string> terms;
    if (Begin(run, terms) && !terms.empty())
        KeepGroupsWithAll(run, terms);
    if (run != runs)
        return;
    ShowFilteredCount(MainForm);
    End();
}

void GroupFilters::cmdOrFilter_Click()
{
    const int run = ++runs;
    std::vector<std::string> terms;
    if (Begin(run, terms))
        KeepGroupsWithAny(run, terms);
    if (run == runs)
        End();
}

void GroupFilters::KeepGroupsWithAll(int run, const std::vector<std::string>& terms)
{
    constexpr int progressInterval = 200;
    const ListBox& groups = MainForm.lstAllGroups;
    const int count = groups.ListCount();
    int progress = 0;
    for (int index = 0; index < count && GoesOn(run); ++index) {
        const std::string& group = groups.List(index);
        bool failed = false;
        ++progress;
        for (const std::string& term : terms) {
            failed = group.find(term) == std::string::npos;
            if (failed)
                break;
            if (progress > progressInterval) {
                ShowFilteredCount(MainForm);
                progress = 0;
                DoEvents();
                if (!GoesOn(run))
                    return;
            }
            if (Session.StopFlag) {
                Session.StopFlag = false;
                return;
            }
        }
        if (!failed)
            MainForm.lstFilteredGroups.AddItem(group);
        DoEvents();
    }
}

void GroupFilters::KeepGroupsWithAny(int run, const std::vector<std::string>& terms)
{
    constexpr int progressInterval = 400;
    const ListBox& groups = MainForm.lstAllGroups;
    int progress = 0;
    for (const std::string& term : terms) {
        const int count = groups.ListCount();
        for (int index = 0; index < count; ++index) {
            const std::string& group = groups.List(index);
            if (group.find(term) != std::string::npos)
                MainForm.lstFilteredGroups.AddItem(group);
            if (++progress > progressInterval) {
                ShowFilteredCount(MainForm);
                progress = 0;
                DoEvents();
                if (!GoesOn(run))
                    return;
            }
            if (Session.StopFlag) {
                Session.TcpDisconnect();
                return;
            }
        }
        ShowFilteredCount(MainForm);
        DoEvents();
        if (!GoesOn(run))
            return;
    }
}
