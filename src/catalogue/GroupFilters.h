#pragma once

#include "session/NewsSession.h"

#include <string>
#include <vector>

// Narrows the list of all groups with terms that are separated by semicolons: a term matches a group when it occurs in
// the group's name, letter by letter. The two filters differ in more than their test: in what their loops go through,
// in how they count, and in how they stop.
class GroupFilters {
public:
    GroupFilters(frmTamarack& mainForm, NewsSession& session);

private:
    // Keeps the groups that hold every term.
    void cmdAndFilter_Click();
    // Keeps the groups that hold any term, once for each term that they hold.
    void cmdOrFilter_Click();

    // False if it was stopped or another run has begun; the filtered list is then not this run's.
    bool Begin(int run, std::vector<std::string>& terms);
    void KeepGroupsWithAll(int run, const std::vector<std::string>& terms);
    void KeepGroupsWithAny(int run, const std::vector<std::string>& terms);
    void End();

    // To be asked after each yield: false once a later press of a button has replaced this run, which then ends where
    // it is and touches nothing more, or once one of the lists has become another one.
    bool GoesOn(int run) const;

    frmTamarack& MainForm;
    NewsSession& Session;
    int runs = 0;
    std::uint64_t allGroupsRevision = 0; // as the latest run has found it
    std::uint64_t filteredTimesCleared = 0; // as the latest run has left it
};
