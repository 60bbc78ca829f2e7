#include "platform/Frame.h"

#include "platform/DisplayText.h"
#include "platform/MouseReporting.h"

#include <QEvent>
#include <QFrame>
#include <QGroupBox>
#include <QPainter>

namespace {

QFrame::Shape Shape(PanelEdge edge, const Place& place)
{
    if (edge == PanelEdge::None)
        return QFrame::NoFrame;
    const bool divider = place.height < 60;
    return divider ? QFrame::HLine : QFrame::StyledPanel;
}

// The edge of a panel that has the focus, drawn above the picture that may cover it.
class Edge : public QWidget {
public:
    explicit Edge(QWidget* panel)
        : QWidget(panel)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        panel->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
            setGeometry(parentWidget()->rect());
            raise();
            update();
        }
        return false;
    }

    void paintEvent(QPaintEvent*) override
    {
        if (!parentWidget()->hasFocus())
            return;
        QPainter painter(this);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
};

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

void Panel::TakesFocus()
{
    widget->setFocusPolicy(Qt::TabFocus);
    new Edge(widget);
}
