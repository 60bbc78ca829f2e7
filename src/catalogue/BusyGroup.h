#pragma once

#include "forms/frmTamarack.h"

// The controls that must not be used while a group list is rebuilt or a search runs: what would start another of the
// two, and the fields of the server.
inline void SetBusyGroupEnabled(frmTamarack& MainForm, bool enabled)
{
    MainForm.cmdRefresh.SetEnabled(enabled);
    MainForm.cmdRefreshDisk.SetEnabled(enabled);
    MainForm.cmdFindNow.SetEnabled(enabled);
    MainForm.mnuFindNow.SetEnabled(enabled);
    MainForm.SSFrame2.SetEnabled(enabled);
}
