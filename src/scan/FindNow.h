#pragma once

#include "scan/GroupScan.h"

// "Find Now" and "Stop Action": checks that a search is possible, makes the controls safe for its length, and runs it.
class FindNow {
public:
    FindNow(frmTamarack& mainForm, NewsSession& session, Desktop& desktop, GroupScan& scan);

private:
    void cmdFindNow_Click();
    bool Search();
    void cmdStop_Click();

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
    GroupScan& scan;
};
