#include "platform/Buttons.h"

#include "platform/DisplayText.h"

#include <QCheckBox>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QStylePainter>
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

// A check box or radio button that draws its caption in as many lines as it needs. The `text` of the widget stays the
// caption as it was given.
template <class Button> class WrappingButton : public Button {
public:
    using Button::Button;

protected:
    static constexpr bool isCheckBox = std::is_same_v<Button, QCheckBox>;

    void paintEvent(QPaintEvent*) override
    {
        QStyleOptionButton option;
        this->initStyleOption(&option);
        const QRect contents = this->style()->subElementRect(
            isCheckBox ? QStyle::SE_CheckBoxContents : QStyle::SE_RadioButtonContents, &option, this);
        option.text = Wrapped(option.text, this->fontMetrics(), contents.width());
        QStylePainter(this).drawControl(isCheckBox ? QStyle::CE_CheckBox : QStyle::CE_RadioButton, option);
    }

    // The whole place takes clicks, as the caption may fill it.
    bool hitButton(const QPoint& position) const override { return this->rect().contains(position); }
};

QPolygonF Triangle(const QRectF& box, bool up)
{
    return up ? QPolygonF({box.bottomLeft(), {box.center().x(), box.top()}, box.bottomRight()})
              : QPolygonF({box.topLeft(), {box.center().x(), box.bottom()}, box.topRight()});
}

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
        const QColor colour
            = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        const qreal size = qMin(width(), height()) * 0.44;
        QRectF box(0, 0, size, size * 0.6);
        box.moveCenter(QRectF(rect()).center());
        const bool up = arrow == Arrow::Up || arrow == Arrow::ToTop;
        const bool toTheEnd = arrow == Arrow::ToTop || arrow == Arrow::ToBottom;
        if (toTheEnd) {
            const qreal bar = qMax(1.0, size * 0.16);
            box.translate(0, up ? bar : -bar);
            painter.drawRect(QRectF(box.left(), up ? box.top() - 2 * bar : box.bottom() + bar, box.width(), bar));
        }
        painter.drawPolygon(Triangle(box, up));
    }

private:
    Arrow arrow;
};

}

CommandButton::CommandButton(Container& container, std::string_view name, std::string_view caption, const Place& place)
    : Control(container, new QPushButton(ToDisplay(caption)), name, place)
{
    auto* button = static_cast<QPushButton*>(widget);
    QObject::connect(button, &QPushButton::clicked, button, [this] { Raise(Click); });
}

void CommandButton::SetShortcut(std::string_view keys)
{
    const QKeySequence sequence(ToDisplay(keys));
    static_cast<QPushButton*>(widget)->setShortcut(sequence);
    const QString tip = widget->toolTip();
    const QString shown = sequence.toString(QKeySequence::NativeText);
    widget->setToolTip(tip.isEmpty() ? shown : tip + QStringLiteral(" (%1)").arg(shown));
}

ArrowButton::ArrowButton(
    Container& container, std::string_view name, Arrow arrow, std::string_view meaning, const Place& place)
    : Control(container, new ArrowFace(arrow), name, place)
{
    auto* button = static_cast<QToolButton*>(widget);
    button->setAccessibleName(ToDisplay(meaning));
    SetToolTip(meaning);
    QObject::connect(button, &QToolButton::clicked, button, [this] { Raise(Click); });
}

CheckBox::CheckBox(Container& container, std::string_view name, std::string_view caption, const Place& place, int value)
    : Control(container, new WrappingButton<QCheckBox>(ToDisplay(caption)), name, place)
{
    auto* box = static_cast<QCheckBox*>(widget);
    box->setChecked(value == 1);
    QObject::connect(box, &QCheckBox::toggled, box, [this] { Raise(Click); });
}

int CheckBox::Value() const { return static_cast<QCheckBox*>(widget)->isChecked() ? 1 : 0; }

void CheckBox::SetValue(int value) { static_cast<QCheckBox*>(widget)->setChecked(value == 1); }

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
    auto* option = static_cast<QRadioButton*>(widget);
    option->setChecked(selected);
    QObject::connect(option, &QRadioButton::toggled, option, [this, option](bool nowSelected) {
        if (!nowSelected)
            return;
        LetTabFindTheChosenOne(*option);
        Raise(Click);
    });
}

bool OptionButton::Value() const { return static_cast<QRadioButton*>(widget)->isChecked(); }

void OptionButton::SetValue(bool selected)
{
    auto* option = static_cast<QRadioButton*>(widget);
    // The toolkit does not let go of the selected option of a group.
    option->setAutoExclusive(selected);
    option->setChecked(selected);
    option->setAutoExclusive(true);
}
