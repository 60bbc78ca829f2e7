#include "catalogue/Picking.h"

#include "base/Text.h"
#include "catalogue/GroupCounts.h"
#include "platform/Events.h"

Picking::Picking(frmTamarack& mainForm)
    : MainForm(mainForm)
{
    MainForm.lstAllGroups.DblClick = [this] { lstAllGroups_DblClick(); };
    MainForm.lstFilteredGroups.DblClick = [this] { lstFilteredGroups_DblClick(); };
    MainForm.lstSelectedGroups.DblClick = [this] { lstSelectedGroups_DblClick(); };
    MainForm.lstSelectedGroups.DeleteKey = [this] { cmdClearSelected_Click(); };
    MainForm.cmdSavePicks.Click = [this] { cmdSavePicks_Click(); };
    MainForm.Command3.Click = [this] { Command3_Click(); };
    MainForm.cmdClearAll.Click = [this] { cmdClearAll_Click(); };
    MainForm.cmdClearSelected.Click = [this] { cmdClearSelected_Click(); };
    for (int index = 0; index < 4; ++index)
        MainForm.MyUpDown[index].Click = [this, index] { MyUpDown_Click(index); };
    MainForm.txtManual.DblClick = [this] { MainForm.txtManual.SelectAll(); };
    MainForm.txtManual.GotFocus = [this] { MainForm.txtManual.SelectAll(); };
}

void Picking::lstAllGroups_DblClick()
{
    const ListBox& groups = MainForm.lstAllGroups;
    MainForm.lstSelectedGroups.AddItem(groups.List(groups.ListIndex()));
    ShowSelectedCount(MainForm);
}

void Picking::lstFilteredGroups_DblClick()
{
    ListBox& groups = MainForm.lstFilteredGroups;
    const int row = groups.ListIndex();
    if (row < 0)
        return;
    MainForm.lstSelectedGroups.AddItem(groups.List(row));
    groups.RemoveItem(row);
    ShowFilteredCount(MainForm);
    ShowSelectedCount(MainForm);
}

void Picking::lstSelectedGroups_DblClick()
{
    ListBox& groups = MainForm.lstSelectedGroups;
    if (groups.ListIndex() < 0)
        return;
    groups.RemoveItem(groups.ListIndex());
    ShowSelectedCount(MainForm);
}

void Picking::cmdSavePicks_Click()
{
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    MainForm.lstSelectedGroups.AddItems(MainForm.lstFilteredGroups.TakeSelected());
    ShowFilteredCount(MainForm);
    ShowSelectedCount(MainForm);
    MainForm.SetMousePointer(MousePointer::Default);
}

void Picking::Command3_Click()
{
    const std::string_view name = Trim(MainForm.txtManual.Text());
    if (name.empty())
        return;
    MainForm.lstSelectedGroups.AddItem(name);
    ShowSelectedCount(MainForm);
}

void Picking::cmdClearAll_Click()
{
    MainForm.lstSelectedGroups.Clear();
    ShowSelectedCount(MainForm);
}

void Picking::cmdClearSelected_Click()
{
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    (void)MainForm.lstSelectedGroups.TakeSelected();
    ShowSelectedCount(MainForm);
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}

// The first two moves take the highlight along; the other two leave it at its place, where the neighbour has moved in.
void Picking::MyUpDown_Click(int index)
{
    const int current = MainForm.lstSelectedGroups.ListIndex();
    const int last = MainForm.lstSelectedGroups.ListCount() - 1;
    switch (index) {
    case 0:
        if (current > 0)
            MoveCurrentRow(current - 1, current - 1);
        break;
    case 1:
        if (current >= 0 && current < last)
            MoveCurrentRow(current + 1, current + 1);
        break;
    case 2:
        if (current > 0)
            MoveCurrentRow(0, current);
        break;
    default:
        if (current >= 0 && current < last)
            MoveCurrentRow(last, current);
    }
}

void Picking::MoveCurrentRow(int to, int highlightedAfterwards)
{
    ListBox& groups = MainForm.lstSelectedGroups;
    const std::string name = groups.List(groups.ListIndex());
    groups.RemoveItem(groups.ListIndex());
    groups.InsertItem(name, to);
    groups.SetListIndex(highlightedAfterwards);
    groups.SetSelected(highlightedAfterwards, true);
}
