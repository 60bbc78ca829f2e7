#pragma once

#include "forms/frmTamarack.h"

// How groups get into the list of selected groups, out of it, and into another order. Nothing here touches the disk.
class Picking {
public:
    explicit Picking(frmTamarack& mainForm);

private:
    void lstAllGroups_DblClick();
    void lstFilteredGroups_DblClick();
    void lstSelectedGroups_DblClick();
    void cmdSavePicks_Click();
    void Command3_Click();
    void cmdClearAll_Click();
    void cmdClearSelected_Click();
    void MyUpDown_Click(int index);

    void MoveCurrentRow(int to, int highlightedAfterwards);

    frmTamarack& MainForm;
};
