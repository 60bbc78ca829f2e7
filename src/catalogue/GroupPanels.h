#pragma once

#include "forms/frmTamarack.h"

// The panels below the lists of groups: how many groups each holds, and what is being done.

inline void ShowTotalCount(frmTamarack& MainForm)
{
    MainForm.StatusBar2.Panels(1).SetText("Total: " + std::to_string(MainForm.lstAllGroups.ListCount()));
}

inline void ShowFilteredCount(frmTamarack& MainForm)
{
    MainForm.StatusBar2.Panels(2).SetText("Filtered: " + std::to_string(MainForm.lstFilteredGroups.ListCount()));
}

inline void ShowSelectedCount(frmTamarack& MainForm)
{
    MainForm.StatusBar2.Panels(3).SetText("Selected: " + std::to_string(MainForm.lstSelectedGroups.ListCount()));
}

inline void ShowActivity(frmTamarack& MainForm, std::string_view text) { MainForm.StatusBar2.Panels(4).SetText(text); }

// Empties all three lists, as for a server that is new or gone.
inline void ClearGroupLists(frmTamarack& MainForm)
{
    MainForm.lstFilteredGroups.Clear();
    MainForm.lstAllGroups.Clear();
    MainForm.lstSelectedGroups.Clear();
    ShowTotalCount(MainForm);
    ShowFilteredCount(MainForm);
    ShowSelectedCount(MainForm);
}
