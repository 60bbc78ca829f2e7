#pragma once

// Delivers all pending events and returns, those included that are posted while it delivers: whoever looks at a state
// behind it sees what has happened up to then. A flood of events, such as of a handler that posts to itself or a server
// that never stops sending, does not hold the caller: after sixteen passes over what is pending it returns all the
// same. What one cause starts takes no more than five (a server that says its last words and hangs up: its bytes, its
// end, the hand-over of either, and what their handlers post).
void DoEvents();

// Sleeps until there is at least one event, delivers what is pending in one pass, and returns, so that a wait looks at
// its condition before anything else happens. It costs no processor time while nothing does, and sees a reply at once.
void WaitForEvents();
