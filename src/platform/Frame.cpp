#include "platform/Frame.h"

#include "platform/DisplayText.h"
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

// The edge of a panel that has the focus, above the picture that may cover it.
class Edge : public QFrame {
public:
    explicit Edge(QWidget* panel)
        : QFrame(panel)
    {
        setFrameShape(Box);
        setLineWidth(2);
        setForegroundRole(QPalette::Highlight);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
        panel->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
            setGeometry(parentWidget()->rect());
            raise();
            setVisible(event->type() == QEvent::FocusIn);
        }
        return false;
    }
};

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
    auto* frame = static_cast<QFrame*>(widget);
    frame->setFrameShape(Shape(edge, place));
    frame->setFrameShadow(edge == PanelEdge::Sunken ? QFrame::Sunken : QFrame::Plain);
}

void Panel::SetHighlighted(bool highlighted)
{
    widget->setBackgroundRole(highlighted ? QPalette::Highlight : QPalette::NoRole);
    widget->setAutoFillBackground(highlighted);
}

void Panel::TakesFocus()
{
    widget->setFocusPolicy(Qt::TabFocus);
    new Edge(widget);
}
