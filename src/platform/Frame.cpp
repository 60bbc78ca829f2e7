#include "platform/Frame.h"

#include "platform/DisplayText.h"
#include "platform/EventFilter.h"
#include "platform/MouseReporting.h"

#include <QEvent>
#include <QFrame>
#include <QGroupBox>

namespace {

QFrame::Shape Shape(PanelEdge edge, const Place& place)
{
    if (edge == PanelEdge::None)
        return QFrame::NoFrame;
    const bool divider = place.height < 60;
    return divider ? QFrame::HLine : QFrame::StyledPanel;
}

}

Frame::Frame(Container& container, std::string_view name, std::string_view caption, const Place& place)
    : Control(container, new QGroupBox(ToDisplay(caption)), name, place)
    , Container(widget)
{
}

Panel::Panel(Container& container, std::string_view name, const Place& place, PanelEdge edge)
    : Control(container, new MouseReporting<QFrame>(*this), name, place)
    , Container(widget)
{
    As<QFrame>().setFrameShape(Shape(edge, place));
    As<QFrame>().setFrameShadow(edge == PanelEdge::Sunken ? QFrame::Sunken : QFrame::Plain);
}

void Panel::SetHighlighted(bool highlighted)
{
    widget->setBackgroundRole(highlighted ? QPalette::Highlight : QPalette::NoRole);
    widget->setAutoFillBackground(highlighted);
}

void Panel::TakesFocus()
{
    widget->setFocusPolicy(Qt::TabFocus);
    // Above the picture that may cover the panel.
    auto* edge = new QFrame(widget);
    edge->setFrameShape(QFrame::Box);
    edge->setLineWidth(2);
    edge->setForegroundRole(QPalette::Highlight);
    edge->setAttribute(Qt::WA_TransparentForMouseEvents);
    edge->hide();
    new EventFilter(widget, [this, edge](const QEvent& event) {
        if (event.type() == QEvent::FocusIn || event.type() == QEvent::FocusOut) {
            edge->setGeometry(widget->rect());
            edge->raise();
            edge->setVisible(event.type() == QEvent::FocusIn);
        }
        return false;
    });
}
