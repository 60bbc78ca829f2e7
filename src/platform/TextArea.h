#pragma once

#include "platform/Control.h"

enum class TextAreaStyle {
    Wrapped, // long lines go on in the next one
    Log, // in a typewriter's letters, with both scroll bars
};

// A text of many lines that the user can read and copy: one that is set as a whole and keeps its bytes, or a large one
// that grows at its end and scrolls there. Direction marks, with which a text could pass for another, show as the
// replacement character.
class TextArea : public Control {
public:
    TextArea(
        Container& container, std::string_view name, const Place& place, TextAreaStyle style = TextAreaStyle::Wrapped);

    // What was set; what has been appended to it, or cut, is on the screen alone.
    const std::string& Text() const { return text; }
    void SetText(std::string_view newText);

    // In characters. A line end, CR LF, counts as one.
    int Length() const;
    // Takes away `count` characters behind the first `from`.
    void Cut(int from, int count);
    // Of a text of more than `most` characters its end.
    void Append(std::string_view newText, int most);
    void Clear();

private:
    std::string text;
    bool endedInCr = false;
};
