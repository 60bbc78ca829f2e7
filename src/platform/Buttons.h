#pragma once

#include "platform/Control.h"

// Beyond a push button, it raises its Click through the copy of a handler; see Raise().
class CommandButton : public Control {
public:
    CommandButton(Container& container, std::string_view name, std::string_view caption, const Place& place);

    // A key that presses the button from anywhere in the window, such as "Alt+N"; the tool tip tells it.
    void SetShortcut(std::string_view keys);

    std::function<void()> Click;
};

enum class Arrow { Up, Down, ToTop, ToBottom };

// A small button with an arrow for its face; `meaning` is its tool tip and what assistive tools read out.
class ArrowButton : public Control {
public:
    ArrowButton(Container& container, std::string_view name, Arrow arrow, std::string_view meaning, const Place& place);

    std::function<void()> Click;
};

// A check box whose `Value` is 1 or 0. Beyond the widget, Click is raised at every change of the value, from code too,
// and a caption that is too long for one line goes on in a second.
class CheckBox : public Control {
public:
    CheckBox(Container& container, std::string_view name, std::string_view caption, const Place& place, int value = 0);

    int Value() const;
    void SetValue(int value);

    std::function<void()> Click;
};

// One of the options of a container, of which at most one is selected. Beyond the widget, Click is raised whenever the
// option becomes selected, from code too, and code may take the selection away. Captions wrap as in a check box.
class OptionButton : public Control {
public:
    OptionButton(Container& container, std::string_view name, std::string_view caption, const Place& place,
        bool selected = false);

    bool Value() const;
    void SetValue(bool selected);

    std::function<void()> Click;
};
