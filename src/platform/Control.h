#pragma once

#include "platform/Screen.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

class QWidget;

// The property under which a widget keeps the number of its help topic. For platform/ alone.
inline constexpr const char* helpTopicProperty = "helpTopic";

// Calls a copy of the handler, if there is one, since a handler may close the window that it belongs to.
template <class... Arguments>
void Raise(const std::function<void(Arguments...)>& handler, std::type_identity_t<Arguments>... arguments)
{
    if (const auto copy = handler)
        copy(arguments...);
}

// What controls lie in: a form, a frame, a panel, a page of a tab strip.
class Container {
public:
    explicit Container(QWidget* newContent = nullptr)
        : content(newContent)
    {
    }

    QWidget* Content() const { return content; }

    // The help topic of what lies in here and has none of its own; see Form::HelpKey.
    void SetFallbackTopic(int number);

protected:
    QWidget* content;
};

// An entry of a menu that opens on a control.
struct ContextEntry {
    std::string caption;
    std::function<void()> chosen;
    bool enabled = true;
};

// What somebody drags, from this program or another one.
struct Dragged {
    std::string text;
    std::vector<std::string> paths; // of files and directories of this machine
};

// What all controls share. A control owns one widget, whose object name is the control's. Beyond what a widget does,
// it speaks twips, and it gives back exactly the place that it was given, fractions included, whatever the pixels are.
// `Enabled` and `Visible` are the control's own and do not tell of the container around it.
class Control {
public:
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    // A control that is disabled or hidden while it, or what it holds, has the keyboard focus has it again afterwards,
    // unless the user has moved on. Meanwhile no other control has it.
    bool Enabled() const;
    void SetEnabled(bool enabled);
    bool Visible() const;
    void SetVisible(bool visible);

    double Left() const { return currentPlace.left; }
    double Top() const { return currentPlace.top; }
    double Width() const { return currentPlace.width; }
    double Height() const { return currentPlace.height; }
    void SetLeft(double left) { Move({left, currentPlace.top, currentPlace.width, currentPlace.height}); }
    void SetTop(double top) { Move({currentPlace.left, top, currentPlace.width, currentPlace.height}); }
    void SetWidth(double width) { Move({currentPlace.left, currentPlace.top, width, currentPlace.height}); }
    void SetHeight(double height) { Move({currentPlace.left, currentPlace.top, currentPlace.width, height}); }
    void Move(const Place& newPlace);

    // Never taken for rich text.
    void SetToolTip(std::string_view text);
    // What assistive tools call the control, where no label or caption of its own tells.
    void SetAccessibleName(std::string_view text);
    // What the F1 key shows the help on while the control has the focus; see Form::HelpKey.
    void SetHelpTopic(int number);
    void SetFocus();

    // A menu on the right mouse button, without Ctrl, and on the menu key. It is asked for its entries when it opens,
    // and lets events through until one is chosen.
    void SetContextMenu(const std::function<std::vector<ContextEntry>()>& entries);

    // What `means` something may be dropped here; the rest is refused while it still hovers.
    void TakeDrops(const std::function<bool(const Dragged&)>& means, const std::function<void(const Dragged&)>& take);

    // Tab leads from each of these to the next one.
    static void SetTabOrder(std::initializer_list<Control*> controls);

    // Free text kept with the control.
    std::string Tag;

    std::function<void()> GotFocus;

protected:
    // Takes the widget and puts it at its place in the container.
    Control(Container& container, QWidget* widget, std::string_view name, const Place& place);
    ~Control();

    // The widget as what it was made as.
    template <class Made> Made& As() const { return static_cast<Made&>(*widget); }

    QWidget* const widget;

private:
    friend class Form;
    friend class Label;
    friend class Stepper;

    void PutFocusAway();
    void BringFocusBack();

    QWidget* focusOwner = nullptr; // in here, until it was put away
    Place currentPlace;
};
