#include "catalogue/SelectedGroups.h"

#include "catalogue/ServerFiles.h"
#include "platform/Events.h"
#include "platform/Files.h"
#include "platform/Text.h"

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
    if (!file.IsOpen())
        return;
    loading = true;
    // Another server that is chosen meanwhile has its own groups in the list by then.
    while (!file.AtEnd() && FileName() == fileName) {
        list.AddItem(file.ReadField());
        DoEvents();
    }
    // What could not be read is not written over.
    loading = !file.IsWhole();
    MainForm.StatusBar2.Panels(3).SetText("Selected: " + std::to_string(list.ListCount()));
}

void SelectedGroups::SaveSelectedGroups()
{
    if (loading)
        return;
    const ListBox& list = MainForm.lstSelectedGroups;
    std::string content;
    for (int row = 0; row < list.ListCount(); ++row) {
        const std::string_view name = Trim(list.List(row));
        // No group has a quotation mark, which would make one field of all rows behind it when they are read back.
        if (!name.empty() && name.find('"') == std::string_view::npos)
            content.append(name).append("\r\n");
    }
    (void)ReplaceFile(FileName(), {content});
}
