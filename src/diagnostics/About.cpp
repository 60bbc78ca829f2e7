#include "diagnostics/About.h"

#include "platform/Application.h"

namespace {

struct frmAbout : Form {
    frmAbout()
        : Form("frmAbout", "About ", {.clientWidth = 4800, .clientHeight = 6150})
    {
        Label1[3].SetFont("Times New Roman", 2.2);
        SetDialogButtons(Command1, Command1);
    }

    ImageControl Image1{*this, "Image1", {150, 150, 4500, 3000}}; // the banner's picture
    // The makers, the licence, the version and the name.
    Label Label1[4] = {{*this, "Label1(0)", "", {150, 4185, 4500, 270}, Alignment::Centre},
        {*this, "Label1(1)",
            "This is free software under the MIT licence: use it, pass it on, and change it as you like. It comes "
            "without any warranty.",
            {150, 4605, 4500, 780}, Alignment::Centre},
        {*this, "Label1(2)", "Version 0.1b", {150, 3900, 4500, 270}, Alignment::Centre},
        {*this, "Label1(3)", "The Tamarack", {150, 3225, 4500, 630}, Alignment::Centre}};
    Panel Frame1{*this, "Frame1", {150, 4500, 4500, 30}, PanelEdge::Sunken}; // a thin rule above the licence
    CommandButton Command1{*this, "Command1", "OK", {1860, 5580, 1080, 375}};
};

}

void mnuAbout_Click(const frmTamarack& MainForm)
{
    frmAbout form;
    form.Image1.SetPicture(MainForm.Image1.Picture());
    form.CentreOnScreen();
    form.Label1[0].SetCaption("Made by the " + std::string(Application::companyName));
    form.Label1[2].SetCaption(
        "Version " + std::to_string(Application::major) + "." + std::to_string(Application::minor));
    form.Command1.Click = [&form] { form.SetVisible(false); };
    form.ShowModal();
}
