#pragma once

#include "forms/frmTamarack.h"

// "About": shows the program's version and its makers, and returns when the user has read it.
void mnuAbout_Click(const frmTamarack& MainForm);
