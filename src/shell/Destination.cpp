#include "shell/Destination.h"

#include "base/Files.h"
#include "forms/DirectoryWalk.h"
#include "platform/Clipboard.h"

namespace {

// Where the attachments go: the volumes, and the directories of one of them.
struct frmSelectDrive : Form {
    frmSelectDrive()
        : Form("frmSelectDrive", "Select the image destination", {.clientWidth = 4470, .clientHeight = 2760})
    {
        SetFallbackTopic(160);
        Drive1.SetAccessibleName("Drives");
        Dir1.SetAccessibleName("Directories");
        SetDialogButtons(CmdExit, cmdCancel);
        Dir1.SetFocus();
    }

    DriveList Drive1{*this, "Drive1", {15, 45, 2640, 315}}; // the volumes
    CommandButton CmdExit{*this, "CmdExit", "Ok", {2730, 45, 795, 300}};
    CommandButton cmdCancel{*this, "cmdCancel", "Cancel", {3645, 45, 780, 300}};
    DirectoryList Dir1{*this, "Dir1", {15, 405, 4440, 2340}}; // the directories of the volume
};

void cmdSelectDir_Click(frmTamarack& MainForm, Desktop& desktop, const std::function<void()>& changed)
{
    frmSelectDrive form;
    DirectoryWalk walk(MainForm, desktop, form.Drive1, form.Dir1);
    form.CentreOnForm(MainForm);
    walk.Begin(MainForm.txtSelectDir.Text());
    form.CmdExit.Click = [&] {
        MainForm.txtSelectDir.SetText(WithSeparator(form.Dir1.List(form.Dir1.ListIndex())));
        changed();
        form.SetVisible(false);
    };
    form.cmdCancel.Click = [&] { form.SetVisible(false); };
    form.ShowModal();
}

// With a separator behind it, a file's path leads nowhere.
bool IsDirectory(const Dragged& dragged)
{
    return dragged.paths.size() == 1 && SameFile(WithSeparator(dragged.paths.front()), dragged.paths.front());
}

}

void BindDestination(frmTamarack& MainForm, Desktop& desktop, const std::function<void()>& changed)
{
    MainForm.cmdSelectDir.Click = [&MainForm, &desktop, changed] { cmdSelectDir_Click(MainForm, desktop, changed); };
    MainForm.txtSelectDir.SetContextMenu([&MainForm, &desktop]() -> std::vector<ContextEntry> {
        const std::string path = MainForm.txtSelectDir.Text();
        return {{"Open the directory", [&desktop, path] { (void)desktop.ShellOpen(AddressOfFile(path)); }},
            {"Copy the path", [path] { Clipboard::SetText(path); }}};
    });
    MainForm.txtSelectDir.TakeDrops(IsDirectory, [&MainForm, changed](const Dragged& dragged) {
        MainForm.txtSelectDir.SetText(WithSeparator(dragged.paths.front()));
        changed();
    });
}
