#pragma once

#include "forms/frmTamarack.h"

struct frmAbout;

// "About": frmAbout with the program's version and its makers.
class About {
public:
    explicit About(frmTamarack& mainForm);

private:
    void mnuAbout_Click();
    void Form_Load(frmAbout& form);

    frmTamarack& MainForm;
};
