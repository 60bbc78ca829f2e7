#pragma once

#include "session/NewsSession.h"

// A use of the session from its first step to its last: a search, a refresh of the list of groups, a command by hand.
// There is one at a time, since a reply is read by what the session knows of the one command in flight. As long as it
// lasts, the controls that would begin another one are disabled, and with them those that choose the server.
class SessionUse {
public:
    explicit SessionUse(NewsSession& session);
    ~SessionUse();
    SessionUse(const SessionUse&) = delete;
    SessionUse& operator=(const SessionUse&) = delete;

    // False if another use was going on already: its end is then the other one's, and no command may be sent.
    explicit operator bool() const { return begun; }

private:
    void SetInUse(bool inUse);

    NewsSession& Session;
    const bool begun;
};
