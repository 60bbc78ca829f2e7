#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"

// "Select Destination Drive": the user walks to the directory for the attachments, which is the text of txtSelectDir,
// or drops one there, which is told by `changed`. A search that is going on uses it from its next article on. Form and
// desktop live as long as what is bound here.
void BindDestination(frmTamarack& MainForm, Desktop& desktop, const std::function<void()>& changed);
