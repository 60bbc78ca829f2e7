#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"

// "Select Destination Drive": the user walks to the directory for the attachments, which is the text of txtSelectDir.
// A search that is going on uses it from its next article on. Returns when the user is done.
void cmdSelectDir_Click(frmTamarack& MainForm, Desktop& desktop);
