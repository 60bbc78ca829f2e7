#pragma once

// Delivers all pending events and returns. It is one pass over what is pending: an event that is posted during the
// pass waits for the next one, so that a handler that posts to itself cannot hold the caller.
void DoEvents();

// Sleeps until there is at least one event, delivers what is pending, and returns. A wait loop around it costs no
// processor time while nothing happens, and sees a reply at once.
void WaitForEvents();
