#include "diagnostics/About.h"

#include "diagnostics/frmAbout.h"
#include "platform/Application.h"

About::About(frmTamarack& mainForm)
    : MainForm(mainForm)
{
    MainForm.mnuAbout.Click = [this] { mnuAbout_Click(); };
}

void About::mnuAbout_Click()
{
    frmAbout form;
    Form_Load(form);
    form.Command1.Click = [&form] { form.SetVisible(false); };
    form.ShowModal();
}

void About::Form_Load(frmAbout& form)
{
    form.Image1.SetPicture(MainForm.Image1.Picture());
    form.CentreOnScreen();
    form.Label1[0].SetCaption("Made by the " + std::string(Application::companyName));
    form.Label1[2].SetCaption(
        "Version " + std::to_string(Application::major) + "." + std::to_string(Application::minor));
}
