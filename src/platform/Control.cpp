#include "platform/Control.h"

#include "platform/DisplayText.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>

class Control::FocusKeeper : public QObject {
public:
    FocusKeeper(QWidget& watched, Control& watchedControl)
        : QObject(&watched)
        , widget(watched)
        , control(watchedControl)
    {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        // Behind the mouse press that may have brought the focus, which would undo what the handler selects.
        if (event->type() == QEvent::FocusIn && control.GotFocus)
            QMetaObject::invokeMethod(
                this, [this] { Raise(control.GotFocus); }, Qt::QueuedConnection);
        return false;
    }

    // The toolkit would hand the focus on to the next control, and the next key press would change that one. The window
    // changes nothing, and unlike other containers it is not painted anew for the focus.
    void PutAway()
    {
        QWidget* const focused = widget.window()->focusWidget();
        if (focused == nullptr || (focused != &widget && !widget.isAncestorOf(focused)))
            return;
        owner = focused;
        widget.window()->setFocus();
    }

    void BringBack()
    {
        if (owner == nullptr || !owner->isEnabled() || owner->isHidden())
            return;
        if (widget.window()->focusWidget() == widget.window())
            owner->setFocus();
        owner = nullptr;
    }

private:
    QWidget& widget;
    Control& control;
    QPointer<QWidget> owner; // of the focus, until it was put away
};

void Container::SetFallbackTopic(int number) { content->setProperty(helpTopicProperty, number); }

Control::Control(Container& container, QWidget* newWidget, std::string_view name, const Place& newPlace)
    : widget(newWidget)
    , focusKeeper(new FocusKeeper(*newWidget, *this))
    , currentPlace(newPlace)
{
    widget->setParent(container.Content());
    widget->setObjectName(ToDisplay(name));
    Move(newPlace);
}

Control::~Control() { delete widget; }

bool Control::Enabled() const { return widget->isEnabledTo(widget->parentWidget()); }

void Control::SetEnabled(bool enabled)
{
    if (!enabled)
        focusKeeper->PutAway();
    widget->setEnabled(enabled);
    if (enabled)
        focusKeeper->BringBack();
}

// A control on a tab that has not been in front yet is hidden too, but not by its own doing.
bool Control::Visible() const { return !(widget->testAttribute(Qt::WA_WState_ExplicitShowHide) && widget->isHidden()); }

void Control::SetVisible(bool visible)
{
    if (!visible)
        focusKeeper->PutAway();
    widget->setVisible(visible);
    if (visible)
        focusKeeper->BringBack();
}

// Edges are rounded, not sizes, so that what lines up in the design lines up on screen.
void Control::Move(const Place& newPlace)
{
    currentPlace = newPlace;
    const QPoint topLeft(Twips::ToPixels(newPlace.left), Twips::ToPixels(newPlace.top));
    const QPoint bottomRight(
        Twips::ToPixels(newPlace.left + newPlace.width), Twips::ToPixels(newPlace.top + newPlace.height));
    widget->setGeometry(QRect(topLeft, QSize(bottomRight.x() - topLeft.x(), bottomRight.y() - topLeft.y())));
}

void Control::SetToolTip(std::string_view text) { widget->setToolTip(ToToolTip(ToShow(text))); }

void Control::SetAccessibleName(std::string_view text) { widget->setAccessibleName(ToDisplay(text)); }

void Control::SetHelpTopic(int number) { widget->setProperty(helpTopicProperty, number); }

void Control::SetFocus() { widget->setFocus(); }

void Control::SetTabOrder(std::initializer_list<Control*> controls)
{
    for (const auto* next = controls.begin(); next + 1 < controls.end(); ++next)
        QWidget::setTabOrder(next[0]->widget, next[1]->widget);
}
