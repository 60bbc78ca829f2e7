#include "platform/StatusBar.h"

#include "platform/DisplayText.h"

#include <QBoxLayout>
#include <QDateTime>
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QTimer>

class StatusPanel::Field : public QLabel {
public:
    explicit Field(QWidget* bar)
        : QLabel(bar)
    {
        setTextFormat(Qt::PlainText);
        setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        setIndent(3);
        setMinimumWidth(1);
        paintTimer.setSingleShot(true);
        paintTimer.setInterval(50);
        connect(&paintTimer, &QTimer::timeout, this, [this] { update(); });
        clock.setInterval(1000);
        connect(&clock, &QTimer::timeout, this, [this] { ShowClock(); });
    }

    void Show(const QString& newText)
    {
        if (newText == text())
            return;
        // Whatever paints the window meanwhile paints the new text; only the label does not ask for it.
        const bool paintedJustNow = paintTimer.isActive();
        setAttribute(Qt::WA_UpdatesDisabled, paintedJustNow);
        setText(newText);
        setAttribute(Qt::WA_UpdatesDisabled, false);
        if (!paintedJustNow)
            paintTimer.start();
    }

    void ShowStyle(PanelStyle newStyle)
    {
        style = newStyle;
        if (style == PanelStyle::Text) {
            clock.stop();
            return;
        }
        ShowClock();
        clock.start();
    }

private:
    void ShowClock()
    {
        const QDateTime now = QDateTime::currentDateTime();
        const QLocale locale;
        Show(style == PanelStyle::Time ? locale.toString(now.time(), QLocale::ShortFormat)
                                       : locale.toString(now.date(), QLocale::ShortFormat));
    }

    PanelStyle style = PanelStyle::Text;
    QTimer paintTimer;
    QTimer clock;
};

StatusPanel::StatusPanel(QWidget* bar)
    : field(new Field(bar))
{
}

std::string StatusPanel::Text() const { return FromDisplay(field->text()); }

void StatusPanel::SetText(std::string_view text) { field->Show(ToShow(text)); }

void StatusPanel::SetStyle(PanelStyle style) { field->ShowStyle(style); }

namespace {

class BottomEdge : public QObject {
public:
    BottomEdge(QWidget* bar, QWidget* container)
        : QObject(bar)
    {
        container->installEventFilter(this);
    }

    bool eventFilter(QObject* container, QEvent* event) override
    {
        if (event->type() == QEvent::Resize) {
            auto* bar = static_cast<QWidget*>(parent());
            bar->move(bar->x(), static_cast<QWidget*>(container)->height() - bar->height());
        }
        return false;
    }
};

}

StatusBar::StatusBar(Container& container, std::string_view name, const Place& place,
    std::initializer_list<StatusPanelDesign> designs, StatusBarPlace where)
    : Control(container, new QWidget, name, place)
{
    auto* row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    for (const StatusPanelDesign& design : designs) {
        panels.push_back(StatusPanel(widget));
        StatusPanel::Field* field = panels.back().field;
        field->setObjectName(QStringLiteral("%1.Panels(%2)").arg(widget->objectName()).arg(panels.size()));
        field->setText(ToDisplay(design.text));
        field->setToolTip(ToDisplay(design.toolTip));
        if (design.style != PanelStyle::Text)
            field->ShowStyle(design.style);
        if (design.width > 0)
            field->setFixedWidth(Twips::ToPixels(design.width));
        row->addWidget(field, design.width > 0 ? 0 : 1);
    }
    if (where == StatusBarPlace::BottomEdge) {
        new BottomEdge(widget, container.Content());
        widget->move(widget->x(), container.Content()->height() - widget->height());
    }
}
