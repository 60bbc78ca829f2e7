#include "forms/DirectoryWalk.h"

#include "base/Files.h"
#include "platform/Events.h"

DirectoryWalk::DirectoryWalk(frmTamarack& mainForm, Desktop& newDesktop, DriveList& drives, DirectoryList& directories)
    : MainForm(mainForm)
    , desktop(newDesktop)
    , Drive1(drives)
    , Dir1(directories)
{
    Dir1.Click = [this] { Dir1_Click(); };
    Dir1.SetContextMenu([this]() -> std::vector<ContextEntry> {
        return {{"New directory...", [this] { MakeNew(); }}};
    });
}

void DirectoryWalk::Begin(const std::string& path)
{
    if (!Dir1.SetPath(path))
        (void)Dir1.SetPath(CurrentDirectory());
    // A change of the volume by its user leads to the top of it; this one must not, whenever a kept form opens again.
    Drive1.Click = nullptr;
    Drive1.SetDrive(Dir1.Path());
    Drive1.Click = [this] { Drive1_Change(); };
}

void DirectoryWalk::Dir1_Click()
{
    if (!Dir1.SetPath(Dir1.List(Dir1.ListIndex())))
        desktop.MsgBox("You need to select a different folder", "Error");
}

// In the directory that the menu was opened on, which is the current row; and opens it.
void DirectoryWalk::MakeNew()
{
    if (Dir1.ListIndex() < 0)
        return;
    const std::optional<std::string> name = desktop.InputBox("Name of the new directory:", "New Directory");
    if (!name || name->empty())
        return;
    const std::string path = WithSeparator(Dir1.List(Dir1.ListIndex())) + *name;
    if (name->find('/') != std::string::npos || MakeDirectory(path) || !Dir1.SetPath(path))
        desktop.MsgBox("The directory could not be made:\r\n" + path, "Error");
}

void DirectoryWalk::Drive1_Change()
{
    MainForm.SetMousePointer(MousePointer::Hourglass);
    DoEvents();
    if (!Dir1.SetPath(Drive1.Text())) {
        desktop.MsgBox("You need to put a disk in the drive", "Error");
        Drive1.SetDrive("C");
    }
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}
