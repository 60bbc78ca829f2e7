#include "platform/Label.h"

#include "platform/DisplayText.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace {

class TextLabel : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        if (wordWrap()) {
            QLabel::paintEvent(event);
            return;
        }
        QPainter painter(this);
        style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine, palette(),
            isEnabled(), fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width()), foregroundRole());
    }
};

}

Label::Label(
    Container& container, std::string_view name, std::string_view caption, const Place& place, Alignment alignment)
    : Control(container, new TextLabel(ToDisplay(caption)), name, place)
{
    auto& label = As<QLabel>();
    label.setTextFormat(Qt::PlainText);
    label.setWordWrap(true);
    const Qt::Alignment horizontal = alignment == Alignment::Left ? Qt::AlignLeft
        : alignment == Alignment::Centre                          ? Qt::AlignHCenter
                                                                  : Qt::AlignRight;
    label.setAlignment(horizontal | Qt::AlignVCenter);
}

std::string Label::Caption() const { return FromDisplay(As<QLabel>().text()); }

void Label::SetCaption(std::string_view caption)
{
    As<QLabel>().setText(ToShow(caption));
    if (!As<QLabel>().wordWrap())
        SetToolTip(caption);
}

void Label::KeepToOneLine() { As<QLabel>().setWordWrap(false); }

void Label::SetFont(std::string_view family, double factor)
{
    QFont font = QApplication::font();
    font.setFamilies({ToDisplay(family), QStringLiteral("serif")});
    font.setPointSizeF(font.pointSizeF() * factor);
    widget->setFont(font);
}

void Label::SetBuddy(Control& control)
{
    As<QLabel>().setBuddy(control.widget);
    control.widget->setAccessibleName(As<QLabel>().text().remove(u'&').remove(u':'));
}
