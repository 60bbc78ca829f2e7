#pragma once

#include "scan/AttachmentSaving.h"
#include "scan/SearchCriteria.h"
#include "scan/SearchProgress.h"

// "Find Now" and "Stop Action", the engine of a search: walks the new articles of each selected group on the open
// connection, from the group's pointer on, and has the wanted ones fetched and saved.
class FindNow {
public:
    FindNow(frmTamarack& mainForm, NewsSession& session, Desktop& desktop, SearchCriteria& criteria,
        AttachmentSaving& saving);

private:
    enum class AfterGroup { NextRow, EndRun };

    void cmdFindNow_Click();
    bool Search();

    // Scans the groups from the list's current row to its last. Leaves the connection open when the rows are used up,
    // and closed when it was ended through StopFlag.
    void ScanGroups();
    std::string_view WhyItEnded() const;
    AfterGroup ScanGroup(const std::string& group);
    // From the group's pointer on, which is in this record.
    void WalkArticles(std::int32_t lastInGroup, std::int64_t pointerRecordNumber);

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
    SearchCriteria& criteria;
    AttachmentSaving& saving;
    SearchProgress progress{MainForm, desktop};
};
