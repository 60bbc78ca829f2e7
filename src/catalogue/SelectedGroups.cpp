#include "catalogue/SelectedGroups.h"

#include "base/Files.h"
#include "base/Text.h"
#include "catalogue/GroupAddress.h"
#include "catalogue/GroupPanels.h"
#include "catalogue/ServerFiles.h"
#include "platform/Clipboard.h"
#include "platform/Events.h"

namespace {

// How far one group has been read, to be changed by hand.
struct frmSetPointer : Form {
    frmSetPointer()
        : Form("frmSetPointer", "Set Article Pointer", {.clientWidth = 3930, .clientHeight = 1020})
    {
        SetFallbackTopic(610);
        Text2.SetAccessibleName("Group");
        Text1.SetAccessibleName("Article number");
        Text1.SetToolTip("Number of the last article read; 0 begins with the oldest");
        SetDialogButtons(cmdOk[0], cmdOk[1]);
        Text1.SetFocus();
    }

    TextBox Text2{*this, "Text2", {120, 120, 3690, 315}, {.readOnly = true}}; // the group
    TextBox Text1{*this, "Text1", {120, 555, 1260, 345}}; // the number of the last article read
    CommandButton cmdOk[2]
        = {{*this, "cmdOk(0)", "Save", {1500, 555, 1095, 345}}, {*this, "cmdOk(1)", "Cancel", {2715, 555, 1095, 345}}};
};

}

SelectedGroups::SelectedGroups(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
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
    MainForm.Command4.Click = [this] { Command4_Click(); };
    BindMenus();
    MainForm.lstSelectedGroups.TakeDrops([](const Dragged& dragged) { return !GroupsIn(dragged.text).empty(); },
        [this](const Dragged& dragged) {
            MainForm.lstSelectedGroups.AddItems(GroupsIn(dragged.text));
            ShowSelectedCount(MainForm);
        });
    MainForm.cmdResetGroup.Click = [this] { cmdResetGroup_Click(); };
}

// Each entry does what its button does, or a double click.
void SelectedGroups::BindMenus()
{
    const auto copy = [](const ListBox& list) {
        const std::string& name = list.List(list.ListIndex());
        return ContextEntry{"Copy the name", [name] { Clipboard::SetText(name); }, !name.empty()};
    };
    MainForm.lstAllGroups.SetContextMenu([this, copy]() -> std::vector<ContextEntry> {
        const ListBox& list = MainForm.lstAllGroups;
        return {{"Add", [this] { lstAllGroups_DblClick(); }, list.ListIndex() >= 0}, copy(list)};
    });
    MainForm.lstFilteredGroups.SetContextMenu([this, copy]() -> std::vector<ContextEntry> {
        const ListBox& list = MainForm.lstFilteredGroups;
        return {{"Add", [this] { cmdSavePicks_Click(); }, MainForm.cmdSavePicks.Enabled()}, copy(list)};
    });
    MainForm.lstSelectedGroups.SetContextMenu([this, copy]() -> std::vector<ContextEntry> {
        const ListBox& list = MainForm.lstSelectedGroups;
        const bool isOnRow = list.ListIndex() >= 0;
        return {{"Remove", [this] { cmdClearSelected_Click(); }, isOnRow},
            {"Reset", [this] { cmdResetGroup_Click(); }, isOnRow},
            {"Set Pointer", [this] { Command4_Click(); }, isOnRow}, copy(list)};
    });
}

std::string SelectedGroups::FileName() const
{
    return ServerFiles::Current(ServerFiles::selectedPrefix, MainForm, Session);
}

void SelectedGroups::LoadSelectedGroups()
{
    ListBox& list = MainForm.lstSelectedGroups;
    list.Clear();
    const std::string fileName = FileName();
    SequentialInput file(fileName);
    const int load = ++loads;
    unreadFile = file.IsWhole() && !file.IsOpen() ? "" : fileName;
    if (!file.IsOpen())
        return;
    // Another server that is chosen or deleted meanwhile has its own groups in the list by then.
    while (!file.AtEnd() && load == loads && FileName() == fileName) {
        list.AddItem(file.ReadField());
        DoEvents();
    }
    if (load == loads && file.IsWhole())
        unreadFile.clear();
    ShowSelectedCount(MainForm);
}

void SelectedGroups::SaveSelectedGroups()
{
    if (FileName() == unreadFile)
        return;
    const ListBox& list = MainForm.lstSelectedGroups;
    std::string content;
    for (int row = 0; row < list.ListCount(); ++row) {
        const std::string_view name = Trim(list.List(row));
        if (!name.empty())
            content.append(name).append("\r\n");
    }
    (void)ReplaceFile(FileName(), {content});
}

void SelectedGroups::lstAllGroups_DblClick()
{
    const ListBox& groups = MainForm.lstAllGroups;
    MainForm.lstSelectedGroups.AddItem(groups.List(groups.ListIndex()));
    ShowSelectedCount(MainForm);
}

void SelectedGroups::lstFilteredGroups_DblClick()
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

void SelectedGroups::lstSelectedGroups_DblClick()
{
    ListBox& groups = MainForm.lstSelectedGroups;
    if (groups.ListIndex() < 0)
        return;
    groups.RemoveItem(groups.ListIndex());
    ShowSelectedCount(MainForm);
}

void SelectedGroups::cmdSavePicks_Click()
{
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    MainForm.lstSelectedGroups.AddItems(MainForm.lstFilteredGroups.TakeSelected());
    ShowFilteredCount(MainForm);
    ShowSelectedCount(MainForm);
    MainForm.SetMousePointer(MousePointer::Default);
}

void SelectedGroups::Command3_Click()
{
    const std::string_view name = Trim(MainForm.txtManual.Text());
    if (name.empty())
        return;
    MainForm.lstSelectedGroups.AddItem(name);
    ShowSelectedCount(MainForm);
}

void SelectedGroups::cmdClearAll_Click()
{
    MainForm.lstSelectedGroups.Clear();
    ShowSelectedCount(MainForm);
}

void SelectedGroups::cmdClearSelected_Click()
{
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    DoEvents();
    (void)MainForm.lstSelectedGroups.TakeSelected();
    ShowSelectedCount(MainForm);
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}

// The first two moves take the highlight along; the other two leave it at its place, where the neighbour has moved in.
void SelectedGroups::MyUpDown_Click(int index)
{
    ListBox& groups = MainForm.lstSelectedGroups;
    const int current = groups.ListIndex();
    const int last = groups.ListCount() - 1;
    const bool up = index % 2 == 0;
    if (up ? current <= 0 : current < 0 || current == last)
        return;
    const int places[] = {current - 1, current + 1, 0, last};
    const int to = places[index];
    const int highlighted = index < 2 ? to : current;
    const std::string name = CurrentGroup();
    groups.RemoveItem(current);
    groups.InsertItem(name, to);
    groups.SetListIndex(highlighted);
    groups.SetSelected(highlighted, true);
}

std::string SelectedGroups::CurrentGroup() const
{
    return MainForm.lstSelectedGroups.List(MainForm.lstSelectedGroups.ListIndex());
}

void SelectedGroups::Command4_Click()
{
    if (MainForm.lstSelectedGroups.ListIndex() < 0) {
        desktop.MsgBox("You must select a group first", "Error");
        return;
    }
    const PointerFile pointers = ServerFiles::CurrentPointers(MainForm, Session);
    const PointerFile::Lookup found = pointers.Find(CurrentGroup());
    frmSetPointer form;
    form.CentreOnForm(MainForm);
    form.Text2.SetText(CurrentGroup());
    form.Text1.SetText(std::to_string(found.article));
    form.Text1.SelectAll();
    form.cmdOk[0].Click = [&] {
        // What is no number, or too large for one, sets the group back to its start.
        (void)pointers.Write(found.recordNumber, CurrentGroup(), WholeNumber(form.Text1.Text()).value_or(0));
        form.SetVisible(false);
    };
    form.cmdOk[1].Click = [&] { form.SetVisible(false); };
    form.ShowModal();
}

void SelectedGroups::cmdResetGroup_Click()
{
    ListBox& groups = MainForm.lstSelectedGroups;
    const int row = groups.ListIndex();
    if (row < 0) {
        desktop.MsgBox("You must first select a group", "Tamarack");
        return;
    }
    const PointerFile pointers = ServerFiles::CurrentPointers(MainForm, Session);
    const PointerFile::Lookup found = pointers.Find(CurrentGroup());
    (void)pointers.Write(found.recordNumber, CurrentGroup(), 0);
    groups.SetSelected(row, false);
    groups.SetListIndex(-1);
}
