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
    SequentialInput file(FileName());
    if (!file.IsOpen())
        return;
    while (!file.AtEnd()) {
        list.AddItem(file.ReadField());
        DoEvents();
    }
    MainForm.StatusBar2.Panels(3).SetText("Selected: " + std::to_string(list.ListCount()));
}

void SelectedGroups::SaveSelectedGroups()
{
    const ListBox& list = MainForm.lstSelectedGroups;
    std::string content;
    for (int row = 0; row < list.ListCount(); ++row) {
        const std::string_view name = Trim(list.List(row));
        if (!name.empty())
            content.append(name).append("\r\n");
    }
    (void)ReplaceFile(FileName(), {content});
}
