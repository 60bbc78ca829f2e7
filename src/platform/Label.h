#pragma once

#include "platform/Control.h"

enum class Alignment { Left, Centre, Right };

// A fixed text; too long for one line, it goes on in the next. Beyond the widget, its text is never taken for rich
// text.
class Label : public Control {
public:
    Label(Container& container, std::string_view name, std::string_view caption, const Place& place,
        Alignment alignment = Alignment::Left);

    std::string Caption() const;
    void SetCaption(std::string_view caption);

    // A text that is too long loses its middle instead of going on in the next line; a tool tip tells all of it.
    void KeepToOneLine();

    // Another family of letters, `factor` times as large as those of the desktop.
    void SetFont(std::string_view family, double factor);

    // The label's mnemonic ("&" in its caption) leads to this control, and assistive tools call it by the label.
    void SetBuddy(Control& control);
};
