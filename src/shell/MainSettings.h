#pragma once

#include "forms/frmTamarack.h"
#include "platform/Settings.h"

// What the person set on the main form, in the settings section "Startup" under the keys "1" to "16" and "AutoLoad".
// An empty value leaves its control at the design's value, and so does one that is not of the control's kind.
void RestoreAutoLoad(frmTamarack& MainForm, const Settings& settings);
void RestoreMainSettings(frmTamarack& MainForm, const Settings& settings);
void SaveMainSettings(const frmTamarack& MainForm, Settings& settings);
