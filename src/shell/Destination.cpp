#include "shell/Destination.h"

#include "platform/Events.h"
#include "shell/frmSelectDrive.h"

Destination::Destination(frmTamarack& mainForm, Desktop& newDesktop)
    : MainForm(mainForm)
    , desktop(newDesktop)
{
    MainForm.cmdSelectDir.Click = [this] { cmdSelectDir_Click(); };
}

void Destination::cmdSelectDir_Click()
{
    frmSelectDrive form;
    Form_Load(form);
    form.Dir1.Click = [&] { Dir1_Click(form); };
    form.Drive1.Change = [&] { Drive1_Change(form); };
    form.CmdExit.Click = [&] { CmdExit_Click(form); };
    form.cmdCancel.Click = [&] { form.SetVisible(false); };
    form.ShowModal();
}

// A destination that has gone away leaves the list at the current directory. The handlers are bound behind this: a
// change of the drive would lead away from the directory to the top of its volume.
void Destination::Form_Load(frmSelectDrive& form)
{
    form.CentreOver(MainForm);
    (void)form.Dir1.SetPath(MainForm.txtSelectDir.Text());
    form.Drive1.SetDrive(form.Dir1.Path());
}

void Destination::Dir1_Click(frmSelectDrive& form)
{
    if (!form.Dir1.SetPath(form.Dir1.List(form.Dir1.ListIndex())))
        desktop.MsgBox("You need to select a different folder", "Error");
}

void Destination::Drive1_Change(frmSelectDrive& form)
{
    MainForm.SetMousePointer(MousePointer::Hourglass);
    DoEvents();
    if (!form.Dir1.SetPath(form.Drive1.Drive())) {
        desktop.MsgBox("You need to put a disk in the drive", "Error");
        form.Drive1.SetDrive("C");
    }
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}

void Destination::CmdExit_Click(frmSelectDrive& form)
{
    std::string path = form.Dir1.List(form.Dir1.ListIndex());
    if (!path.ends_with('/'))
        path += '/';
    MainForm.txtSelectDir.SetText(path);
    form.SetVisible(false);
}
