#pragma once

// What holds for the whole process from its first moment on. To be called before the toolkit is started, and of the
// toolkit only what needs no application.
//
// - Plugins come from the toolkit's own directory alone. By itself the toolkit would also look beside the executable,
//   where downloads may lie, and let a file there, qt.conf, say where else.
// - No core dump is made, since passwords would be in it; no other process of the user may read the memory either.
// - HOME, where it is not set, or leads nowhere certain, becomes the home directory of the system's user database.
// - What the toolkit has to say goes to the standard error output without control characters: it may quote a stranger.
void PrepareProcess();
