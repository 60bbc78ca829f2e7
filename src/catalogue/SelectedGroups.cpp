#include "catalogue/SelectedGroups.h"

#include "base/Files.h"
#include "base/Text.h"
#include "catalogue/GroupCounts.h"
#include "catalogue/ServerFiles.h"
#include "platform/Events.h"

SelectedGroups::SelectedGroups(frmTamarack& mainForm, NewsSession& session)
    : MainForm(mainForm)
    , Session(session)
{
}

std::string SelectedGroups::FileName() const
{
    return ServerFiles::Selected(Session.AppDir, MainForm.cboNewsServer.Text());
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
