#include "pictures/frmSlideShow.h"

frmSlideShow::frmSlideShow()
    : Form("frmSlideShow", "Slide Show", {.clientWidth = 6450, .clientHeight = 6645})
{
    SetFallbackTopic(1070);
    Command1[6].SetEnabled(false);
    Command1[6].SetAccessibleName("Backdrop");
    for (int pane = 0; pane < 6; ++pane) {
        const std::string name = "Pane " + std::to_string(pane);
        PreviewImage[pane].SetToolTip(name);
        SSPanel1[pane].SetAccessibleName(name);
        SSPanel1[pane].TakesFocus();
    }
    Command1[2].SetToolTip("Delete the file of the selected pane, without a question");
    Label1[0].SetBuddy(txtDelay);
    Drive1.SetAccessibleName("Drives");
    Dir1.SetAccessibleName("Directories");
    lstFiles.SetAccessibleName("Pictures");

    // As they lie on the window.
    Control* previous = &chkOptions;
    for (Control* next : std::initializer_list<Control*>{&Command1[7], &txtDelay, &Command1[0], &Command1[5],
             &Command1[1], &Command1[2], &Command1[3], &Command1[4]}) {
        previous->PrecedesInTabOrder(*next);
        previous = next;
    }
}
