#include "platform/Buttons.h"

#include "platform/DisplayText.h"

#include <QCheckBox>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QToolButton>

namespace {

// The caption broken into lines that fit, at blanks.
QString Wrapped(const QString& caption, const QFontMetrics& metrics, int width)
{
    QString text;
    QString line;
    for (const QString& word : caption.split(u' ')) {
        const QString longer = line.isEmpty() ? word : line + u' ' + word;
        if (!line.isEmpty() && metrics.size(Qt::TextShowMnemonic, longer).width() > width) {
            text += line + u'\n';
            line = word;
        } else {
            line = longer;
        }
    }
    return text + line;
}

// A check box or radio button whose caption takes as many lines as it needs. The `text` of the widget stays the caption
// as it was given.
template <class Button> class WrappingButton : public Button {
public:
    using Button::Button;

protected:
    void initStyleOption(QStyleOptionButton* option) const override
    {
        constexpr bool isCheckBox = std::is_same_v<Button, QCheckBox>;
        Button::initStyleOption(option);
        const QRect contents = this->style()->subElementRect(
            isCheckBox ? QStyle::SE_CheckBoxContents : QStyle::SE_RadioButtonContents, option, this);
        option->text = Wrapped(option->text, this->fontMetrics(), contents.width());
    }

    // The whole place takes clicks, as the caption may fill it.
    bool hitButton(const QPoint& position) const override { return this->rect().contains(position); }
};

class ArrowFace : public QToolButton {
public:
    ArrowFace(Arrow newArrow)
        : arrow(newArrow)
    {
        setFocusPolicy(Qt::StrongFocus);
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QToolButton::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().buttonText());
        painter.translate(QRectF(rect()).center());
        if (arrow == Arrow::Down || arrow == Arrow::ToBottom)
            painter.scale(1, -1);
        const qreal size = qMin(width(), height()) * 0.44;
        const bool toTheEnd = arrow == Arrow::ToTop || arrow == Arrow::ToBottom;
        const qreal bar = toTheEnd ? qMax(1.0, size * 0.16) : 0;
        const QRectF box(-size / 2, bar - size * 0.3, size, size * 0.6);
        painter.drawRect(QRectF(box.left(), box.top() - 2 * bar, size, bar));
        painter.drawPolygon(QPolygonF({box.bottomLeft(), {0, box.top()}, box.bottomRight()}));
    }

private:
    Arrow arrow;
};

}

CommandButton::CommandButton(Container& container, std::string_view name, std::string_view caption, const Place& place)
    : Control(container, new QPushButton(ToDisplay(caption)), name, place)
{
    QObject::connect(&As<QPushButton>(), &QPushButton::clicked, widget, [this] { Raise(Click); });
}

void CommandButton::SetShortcut(std::string_view keys)
{
    const QKeySequence sequence(ToDisplay(keys));
    As<QPushButton>().setShortcut(sequence);
    const QString tip = widget->toolTip();
    const QString shown = sequence.toString(QKeySequence::NativeText);
    widget->setToolTip(tip.isEmpty() ? shown : tip + QStringLiteral(" (%1)").arg(shown));
}

ArrowButton::ArrowButton(
    Container& container, std::string_view name, Arrow arrow, std::string_view meaning, const Place& place)
    : Control(container, new ArrowFace(arrow), name, place)
{
    SetAccessibleName(meaning);
    SetToolTip(meaning);
    QObject::connect(&As<QToolButton>(), &QToolButton::clicked, widget, [this] { Raise(Click); });
}

CheckBox::CheckBox(Container& container, std::string_view name, std::string_view caption, const Place& place, int value)
    : Control(container, new WrappingButton<QCheckBox>(ToDisplay(caption)), name, place)
{
    As<QCheckBox>().setChecked(value == 1);
    QObject::connect(&As<QCheckBox>(), &QCheckBox::toggled, widget, [this] { Raise(Click); });
}

int CheckBox::Value() const { return As<QCheckBox>().isChecked() ? 1 : 0; }

void CheckBox::SetValue(int value) { As<QCheckBox>().setChecked(value == 1); }

namespace {

// Tab leads to the chosen option of a group, and the arrow keys lead on from it. The toolkit sees to that only once one
// of them has had the focus.
void LetTabFindTheChosenOne(const QRadioButton& chosen)
{
    for (QRadioButton* option : chosen.parentWidget()->findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly))
        option->setFocusPolicy(option == &chosen ? Qt::StrongFocus : Qt::ClickFocus);
}

}

OptionButton::OptionButton(
    Container& container, std::string_view name, std::string_view caption, const Place& place, bool selected)
    : Control(container, new WrappingButton<QRadioButton>(ToDisplay(caption)), name, place)
{
    As<QRadioButton>().setChecked(selected);
    QObject::connect(&As<QRadioButton>(), &QRadioButton::toggled, widget, [this](bool nowSelected) {
        if (!nowSelected)
            return;
        LetTabFindTheChosenOne(As<QRadioButton>());
        Raise(Click);
    });
}

bool OptionButton::Value() const { return As<QRadioButton>().isChecked(); }

void OptionButton::SetValue(bool selected)
{
    auto& option = As<QRadioButton>();
    // The toolkit does not let go of the selected option of a group.
    option.setAutoExclusive(selected);
    option.setChecked(selected);
    option.setAutoExclusive(true);
}
