#pragma once

// How far the program is, in its icon in the launchers that show such a thing: from 0 to 1, or less than 0 for nothing.
// For platform/ alone.
void ShowInLauncher(double share);
