#include "platform/Frame.h"

#include "platform/DisplayText.h"
#include "platform/MouseReporting.h"

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
{
    content = widget;
}

Panel::Panel(Container& container, std::string_view name, const Place& place, PanelEdge edge)
    : Control(container, new MouseReporting<QFrame>(*this), name, place)
{
    auto* frame = static_cast<QFrame*>(widget);
    frame->setFrameShape(Shape(edge, place));
    frame->setFrameShadow(edge == PanelEdge::Sunken ? QFrame::Sunken : QFrame::Plain);
    content = widget;
}

void Panel::SetHighlighted(bool highlighted)
{
    widget->setBackgroundRole(highlighted ? QPalette::Highlight : QPalette::NoRole);
    widget->setAutoFillBackground(highlighted);
}
