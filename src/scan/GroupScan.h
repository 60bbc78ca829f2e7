#pragma once

#include "catalogue/PointerFile.h"
#include "platform/Desktop.h"
#include "scan/ArticleMatching.h"
#include "scan/AttachmentStoring.h"

// The engine of a search: walks the new articles of each selected group on the open connection, from the group's
// pointer on, and has the wanted ones fetched and stored.
class GroupScan {
public:
    GroupScan(frmTamarack& mainForm, NewsSession& session, Desktop& desktop, ArticleMatching& matching,
        AttachmentStoring& store);

    // Scans the groups from the list's current row to its last. Leaves the connection open when the rows are used up,
    // and closed when it was ended through StopFlag.
    void ScanGroups(ListBox& list);

private:
    enum class AfterGroup { NextRow, EndRun };

    AfterGroup ScanGroup(const std::string& group);
    void WalkArticles(std::int32_t lastInGroup);
    PointerFile Pointers() const;
    void FindPointer();
    void WritePointer(std::int32_t article);

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
    ArticleMatching& matching;
    AttachmentStoring& store;
    std::int64_t pointerRecordNumber = 1;
};
