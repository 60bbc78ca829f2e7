#include "catalogue/PointerActions.h"

#include "base/Text.h"
#include "catalogue/ServerFiles.h"
#include "catalogue/frmSetPointer.h"

PointerActions::PointerActions(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
{
    MainForm.Command4.Click = [this] { Command4_Click(); };
    MainForm.cmdResetGroup.Click = [this] { cmdResetGroup_Click(); };
}

std::string PointerActions::Group() const
{
    return MainForm.lstSelectedGroups.List(MainForm.lstSelectedGroups.ListIndex());
}

PointerFile PointerActions::Pointers() const
{
    return PointerFile(ServerFiles::Pointers(Session.AppDir, MainForm.cboNewsServer.Text()));
}

void PointerActions::Command4_Click()
{
    if (MainForm.lstSelectedGroups.ListIndex() < 0) {
        desktop.MsgBox("You must select a group first", "Error");
        return;
    }
    const PointerFile::Lookup found = Pointers().Find(Group());
    frmSetPointer form;
    form.CentreOnForm(MainForm);
    form.Text2.SetText(Group());
    form.Text1.SetText(std::to_string(found.article));
    form.Text1.SelectAll();
    form.cmdOk[0].Click = [&] {
        // What is no number, or too large for one, sets the group back to its start.
        (void)Pointers().Write(found.recordNumber, Group(), WholeNumber(form.Text1.Text()).value_or(0));
        form.SetVisible(false);
    };
    form.cmdOk[1].Click = [&] { form.SetVisible(false); };
    form.ShowModal();
}

void PointerActions::cmdResetGroup_Click()
{
    ListBox& groups = MainForm.lstSelectedGroups;
    const int row = groups.ListIndex();
    if (row < 0) {
        desktop.MsgBox("You must first select a group", "Tamarack");
        return;
    }
    const PointerFile::Lookup found = Pointers().Find(Group());
    (void)Pointers().Write(found.recordNumber, Group(), 0);
    groups.SetSelected(row, false);
    groups.SetListIndex(-1);
}
