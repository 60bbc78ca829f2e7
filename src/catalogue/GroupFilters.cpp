#include "catalogue/GroupFilters.h"

#include "platform/Events.h"
#include "platform/Text.h"

GroupFilters::GroupFilters(frmTamarack& mainForm, NewsSession& session)
    : MainForm(mainForm)
    , Session(session)
{
    MainForm.cmdAndFilter.Click = [this] { cmdAndFilter_Click(); };
    MainForm.cmdOrFilter.Click = [this] { cmdOrFilter_Click(); };
}

bool GroupFilters::Begin(std::vector<std::string>& terms)
{
    Session.StopFlag = false;
    MainForm.StatusBar2.Panels(4).SetText("Filtering Groups");
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    const std::string typed = MainForm.txtNewsGroups.Text();
    std::string_view rest = Trim(typed);
    while (!rest.empty()) {
        if (Session.StopFlag) {
            Session.TcpDisconnect();
            return false;
        }
        const std::size_t end = rest.find(';');
        const std::string_view term = Trim(rest.substr(0, end));
        if (!term.empty())
            terms.emplace_back(term);
        if (end == std::string_view::npos)
            break;
        rest.remove_prefix(end + 1);
    }
    MainForm.lstFilteredGroups.Clear();
    hits = 0;
    ShowHits();
    return true;
}

void GroupFilters::End()
{
    MainForm.StatusBar2.Panels(4).SetText("");
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
    MainForm.cmdSavePicks.SetEnabled(MainForm.lstFilteredGroups.ListCount() > 0);
}

void GroupFilters::cmdAndFilter_Click()
{
    std::vector<std::string> terms;
    if (Begin(terms) && !terms.empty())
        KeepGroupsWithAll(terms);
    ShowHits();
    End();
}

void GroupFilters::cmdOrFilter_Click()
{
    std::vector<std::string> terms;
    if (Begin(terms))
        KeepGroupsWithAny(terms);
    End();
}

void GroupFilters::KeepGroupsWithAll(const std::vector<std::string>& terms)
{
    constexpr int progressInterval = 200;
    const ListBox& groups = MainForm.lstAllGroups;
    const int last = groups.ListCount() - 1;
    const std::uint64_t revision = groups.Revision();
    int progress = 0;
    // A list that changes underneath has no next entry.
    for (int index = 0; index <= last && groups.Revision() == revision; ++index) {
        const std::string& group = groups.List(index);
        bool failed = false;
        ++progress;
        for (const std::string& term : terms) {
            failed = group.find(term) == std::string::npos;
            if (failed)
                break;
            if (progress > progressInterval) {
                ShowHits();
                progress = 0;
                DoEvents();
                if (groups.Revision() != revision)
                    return;
            }
            if (Session.StopFlag) {
                Session.StopFlag = false;
                return;
            }
        }
        if (!failed)
            Keep(group);
        DoEvents();
    }
}

void GroupFilters::KeepGroupsWithAny(const std::vector<std::string>& terms)
{
    constexpr int progressInterval = 400;
    const ListBox& groups = MainForm.lstAllGroups;
    const std::uint64_t revision = groups.Revision();
    int progress = 0;
    for (const std::string& term : terms) {
        const int count = groups.ListCount();
        for (int index = 0; index < count && groups.Revision() == revision; ++index) {
            const std::string& group = groups.List(index);
            if (group.find(term) != std::string::npos)
                Keep(group);
            if (++progress > progressInterval) {
                ShowHits();
                progress = 0;
                DoEvents();
            }
            if (Session.StopFlag) {
                Session.TcpDisconnect();
                return;
            }
        }
        ShowHits();
        DoEvents();
    }
}

void GroupFilters::Keep(const std::string& group)
{
    MainForm.lstFilteredGroups.AddItem(group);
    ++hits;
}

void GroupFilters::ShowHits() { MainForm.StatusBar2.Panels(2).SetText("Filtered: " + std::to_string(hits)); }
