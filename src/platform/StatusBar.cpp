#include "platform/StatusBar.h"

#include "platform/DisplayText.h"

#include <QApplication>
#include <QBoxLayout>
#include <QDateTime>
#include <QFontInfo>
#include <QHelpEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <numeric>

class StatusPanel::Field : public QLabel {
public:
    Field(QWidget* row, const StatusPanelDesign& design)
        : QLabel(row)
        , takesRest(design.takesRest)
        , designedToolTip(ToDisplay(design.toolTip))
        , longest{ToDisplay(design.longest)}
    {
        setText(ToDisplay(design.text));
        setToolTip(designedToolTip);
        setTextFormat(Qt::PlainText);
        setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        setIndent(margin);
        paintTimer.setSingleShot(true);
        paintTimer.setInterval(50);
        connect(&paintTimer, &QTimer::timeout, this, [this] { update(); });
        liveToolTipTimer.setSingleShot(true);
        connect(&liveToolTipTimer, &QTimer::timeout, this, [this] {
            if (QToolTip::isVisible() && underMouse() && !liveToolTip().empty())
                ShowLiveToolTip();
        });
        SetStyle(design.style);
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

    void SetLetters(const QFont& letters)
    {
        setFont(letters);
        setIndent(IndentIn(letters));
    }

    void SetStyle(PanelStyle newStyle)
    {
        style = newStyle;
        if (!HasClock())
            return;
        longest.clear();
        for (int month = 1; month <= 12; ++month)
            longest << Clock(QDateTime({2026, month, 28}, {2 * (month - 1), 48, 48}));
    }

    bool HasClock() const { return style != PanelStyle::Text; }

    void ShowClock() { Show(Clock(QDateTime::currentDateTime())); }

    int WidthIn(const QFont& letters) const
    {
        const QFontMetrics metrics(letters);
        int width = 0;
        for (const QString& text : longest)
            width = std::max(width, metrics.horizontalAdvance(text));
        return width + IndentIn(letters) + 2 * frameWidth() + 1;
    }

    const bool takesRest;
    const QString designedToolTip;
    std::function<std::string()> liveToolTip;
    bool hasPadlock = false;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip || !liveToolTip || liveToolTip().empty())
            return QLabel::event(event);
        liveToolTipPlace = static_cast<QHelpEvent*>(event)->globalPos();
        ShowLiveToolTip();
        return true;
    }

    void paintEvent(QPaintEvent* event) override
    {
        QLabel::paintEvent(event);
        if (!hasPadlock)
            return;
        // The body takes the lower half; the shackle stands on it.
        const double side = PadlockSide(font());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(frameWidth() + margin, (height() - side) / 2);
        const QColor colour = palette().color(foregroundRole());
        painter.setPen(QPen(colour, side / 8));
        const QRectF shackle(side * 0.28, side * 0.06, side * 0.44, side * 0.6);
        painter.drawArc(shackle, 0, 180 * 16);
        painter.drawLine(QLineF(shackle.left(), shackle.center().y(), shackle.left(), side * 0.5));
        painter.drawLine(QLineF(shackle.right(), shackle.center().y(), shackle.right(), side * 0.5));
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(QRectF(side * 0.1, side * 0.48, side * 0.8, side * 0.52), side / 12, side / 12);
    }

private:
    static constexpr int margin = 2;

    static int PadlockSide(const QFont& letters) { return QFontInfo(letters).pixelSize(); }

    int IndentIn(const QFont& letters) const { return hasPadlock ? 2 * margin + PadlockSide(letters) : margin; }

    // Brought up to date for as long as it is there.
    void ShowLiveToolTip()
    {
        QToolTip::showText(liveToolTipPlace, ToToolTip(ToShow(liveToolTip())), this);
        liveToolTipTimer.start(std::chrono::seconds(1));
    }

    QString Clock(const QDateTime& when) const
    {
        const QLocale locale;
        return style == PanelStyle::Time ? locale.toString(when.time(), QLocale::ShortFormat)
                                         : locale.toString(when.date(), QLocale::ShortFormat);
    }

    QStringList longest;
    PanelStyle style = PanelStyle::Text;
    QTimer paintTimer;
    QTimer liveToolTipTimer;
    QPoint liveToolTipPlace;
};

// What the panels lie in.
class StatusPanel::Row : public QWidget {
public:
    Row()
    {
        layout.setContentsMargins(0, 0, 0, 0);
        layout.setSpacing(spacing);
        connect(&clock, &QTimer::timeout, this, [this] { ShowClock(); });
    }

    Field* Add(const StatusPanelDesign& design)
    {
        auto* field = fields.emplace_back(new Field(this, design));
        field->setObjectName(QStringLiteral("%1.Panels(%2)").arg(objectName()).arg(fields.size()));
        layout.addWidget(field, field->takesRest ? 1 : 0);
        return field;
    }

    // Gives each panel the room for its longest text, and shows the clock. In many fonts the longest texts do not fit
    // side by side; then the letters are smaller by what that takes, down to three quarters.
    void Fit()
    {
        QFont letters = QApplication::font();
        const int size = QFontInfo(letters).pixelSize();
        for (int smaller = size - 1; WidthIn(letters) > width() && smaller >= size * 3 / 4; --smaller)
            letters.setPixelSize(smaller);
        for (Field* field : fields) {
            field->SetLetters(letters);
            if (field->takesRest)
                field->setMinimumWidth(1);
            else
                field->setFixedWidth(field->WidthIn(letters));
        }
        ShowClock();
    }

private:
    static constexpr int spacing = 1;

    int WidthIn(const QFont& letters) const
    {
        return std::accumulate(fields.begin(), fields.end(), spacing * static_cast<int>(fields.size() - 1),
            [&letters](int sum, const Field* field) { return sum + field->WidthIn(letters); });
    }

    void ShowClock()
    {
        for (Field* field : fields) {
            if (field->HasClock()) {
                field->ShowClock();
                clock.start(1000);
            }
        }
    }

    QHBoxLayout layout{this};
    std::vector<Field*> fields;
    QTimer clock;
};

StatusPanel::StatusPanel(Field* newField)
    : field(newField)
{
}

void StatusPanel::SetText(std::string_view text) { field->Show(ToShow(text)); }

void StatusPanel::SetLiveToolTip(std::function<std::string()> text) { field->liveToolTip = std::move(text); }

void StatusPanel::SetToolTip(std::string_view text)
{
    field->setToolTip(text.empty() ? field->designedToolTip : ToToolTip(ToShow(text)));
}

void StatusPanel::SetPadlock(bool shown)
{
    field->hasPadlock = shown;
    static_cast<Row*>(field->parentWidget())->Fit(); // the text makes room for it
}

void StatusPanel::SetStyle(PanelStyle style)
{
    field->SetStyle(style);
    static_cast<Row*>(field->parentWidget())->Fit();
}

StatusBar::StatusBar(Container& container, std::string_view name, const Place& place,
    std::initializer_list<StatusPanelDesign> designs, StatusBarPlace where)
    : Control(container, new StatusPanel::Row, name, place)
{
    auto& row = As<StatusPanel::Row>();
    for (const StatusPanelDesign& design : designs)
        panels.push_back(StatusPanel(row.Add(design)));
    row.Fit();
    if (where == StatusBarPlace::AsDesigned)
        return;
    // A layout that has nothing else in it leaves all other controls where they are.
    row.setFixedSize(row.size());
    auto* edge = new QVBoxLayout(container.Content());
    edge->setContentsMargins(row.x(), 0, 0, 0);
    edge->addWidget(&row, 1, Qt::AlignLeft | Qt::AlignBottom);
}
