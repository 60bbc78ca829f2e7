#include "shell/Destination.h"

#include "base/Files.h"
#include "forms/DirectoryWalk.h"
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
    DirectoryWalk walk(MainForm, desktop, form.Drive1, form.Dir1);
    form.CentreOnForm(MainForm);
    walk.Begin(MainForm.txtSelectDir.Text());
    form.CmdExit.Click = [&] { CmdExit_Click(form); };
    form.cmdCancel.Click = [&] { form.SetVisible(false); };
    form.ShowModal();
}

void Destination::CmdExit_Click(frmSelectDrive& form)
{
    MainForm.txtSelectDir.SetText(WithSeparator(form.Dir1.List(form.Dir1.ListIndex())));
    form.SetVisible(false);
}
