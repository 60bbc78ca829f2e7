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

    void KeepGroupsWithAll(const std::vector<std::string>& terms);
    void KeepGroupsWithAny(const std::vector<std::string>& terms);

    // False if it was stopped; the filtered list is then as it was.
    bool Begin(std::vector<std::string>& terms);
    void End();
    void Keep(const std::string& group);
    void ShowHits();

    frmTamarack& MainForm;
    NewsSession& Session;
    int hits = 0;
};
