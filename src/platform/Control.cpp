#include "platform/Control.h"

#include "platform/DisplayText.h"
#include "platform/EventFilter.h"

#include <QEvent>
#include <QWidget>

void Container::SetFallbackTopic(int number) { content->setProperty(helpTopicProperty, number); }

Control::Control(Container& container, QWidget* newWidget, std::string_view name, const Place& newPlace)
    : widget(newWidget)
    , currentPlace(newPlace)
{
    widget->setParent(container.Content());
    widget->setObjectName(ToDisplay(name));
    // Behind the mouse press that may have brought the focus, which would undo what the handler selects.
    new EventFilter(widget, [this](const QEvent& event) {
        if (event.type() == QEvent::FocusIn && GotFocus)
            QMetaObject::invokeMethod(
                widget, [this] { Raise(GotFocus); }, Qt::QueuedConnection);
        return false;
    });
    Move(newPlace);
}

Control::~Control() { delete widget; }

bool Control::Enabled() const { return widget->isEnabledTo(widget->parentWidget()); }

void Control::SetEnabled(bool enabled)
{
    if (!enabled)
        PutFocusAway();
    widget->setEnabled(enabled);
    if (enabled)
        BringFocusBack();
}

// A control on a tab that has not been in front yet is hidden too, but not by its own doing.
bool Control::Visible() const { return !(widget->testAttribute(Qt::WA_WState_ExplicitShowHide) && widget->isHidden()); }

void Control::SetVisible(bool visible)
{
    if (!visible)
        PutFocusAway();
    widget->setVisible(visible);
    if (visible)
        BringFocusBack();
}

// The toolkit would hand the focus on to the next control, and the next key press would change that one. The window
// changes nothing, and unlike other containers it is not painted anew for the focus.
void Control::PutFocusAway()
{
    QWidget* const focused = widget->window()->focusWidget();
    if (focused == nullptr || (focused != widget && !widget->isAncestorOf(focused)))
        return;
    focusOwner = focused;
    widget->window()->setFocus();
}

void Control::BringFocusBack()
{
    if (focusOwner == nullptr || !focusOwner->isEnabled() || focusOwner->isHidden())
        return;
    if (widget->window()->focusWidget() == widget->window())
        focusOwner->setFocus();
    focusOwner = nullptr;
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
