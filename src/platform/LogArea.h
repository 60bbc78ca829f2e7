#pragma once

#include "platform/Control.h"

// A large text that grows at its end and scrolls there, in a typewriter's letters, with both scroll bars. The user can
// read and copy it. A line end, CR LF, counts as one character.
class LogArea : public Control {
public:
    LogArea(Container& container, std::string_view name, const Place& place);

    int Length() const;

    // Takes away `count` characters behind the first `from`.
    void Cut(int from, int count);
    // Of a text of more than `most` characters its end.
    void Append(std::string_view text, int most);
    void Clear();

private:
    bool endedInCr = false;
};
