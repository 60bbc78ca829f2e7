#include "platform/TextBox.h"

#include "platform/Buttons.h"
#include "platform/DisplayText.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTextDocument>

namespace {

class LineEdit : public QLineEdit {
public:
    explicit LineEdit(TextBox& ownerBox)
        : box(ownerBox)
    {
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        QLineEdit::mouseDoubleClickEvent(event);
        Raise(box.DblClick);
    }

private:
    TextBox& box;
};

QWidget* MakeWidget(TextBox& box, const TextBoxStyle& style)
{
    if (style.multiLine) {
        auto* edit = new QPlainTextEdit;
        edit->setReadOnly(style.readOnly);
        edit->setTabChangesFocus(true);
        edit->document()->setDocumentMargin(1);
        edit->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        edit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        return edit;
    }
    auto* edit = new LineEdit(box);
    edit->setReadOnly(style.readOnly);
    edit->setPlaceholderText(ToDisplay(style.hint));
    if (style.maxLength > 0)
        edit->setMaxLength(style.maxLength);
    if (style.masked) {
        edit->setEchoMode(QLineEdit::Password);
        edit->setStyleSheet(QStringLiteral("lineedit-password-character: 42"));
    }
    return edit;
}

}

TextBox::TextBox(Container& container, std::string_view name, const Place& place, const TextBoxStyle& style)
    : Control(container, MakeWidget(*this, style), name, place)
    , multiLine(style.multiLine)
{
    SetText(style.text);
    const auto edited = [this] {
        if (!settingFromCode)
            Take(FromDisplay(ShownText()));
    };
    if (multiLine)
        QObject::connect(static_cast<QPlainTextEdit*>(widget), &QPlainTextEdit::textChanged, widget, edited);
    else
        QObject::connect(static_cast<QLineEdit*>(widget), &QLineEdit::textChanged, widget, edited);
}

void TextBox::SetText(std::string_view newText)
{
    // Somebody may be typing into it.
    if (newText == text)
        return;
    settingFromCode = true;
    const QString wanted = ToDisplay(newText);
    SetShownText(wanted);
    settingFromCode = false;
    const QString shown = ShownText();
    // The field may have cut it at its limit.
    Take(shown.size() < wanted.size() && wanted.startsWith(shown) ? FromDisplay(shown) : std::string(newText));
}

void TextBox::SelectAll()
{
    if (multiLine)
        static_cast<QPlainTextEdit*>(widget)->selectAll();
    else
        static_cast<QLineEdit*>(widget)->selectAll();
}

void TextBox::EnterPresses(const CommandButton& button)
{
    QObject::connect(static_cast<QLineEdit*>(widget), &QLineEdit::returnPressed, widget, [&button] {
        if (button.Enabled())
            Raise(button.Click);
    });
}

void TextBox::Take(std::string newText)
{
    if (newText == text)
        return;
    text = std::move(newText);
    Raise(Change);
}

void TextBox::SetShownText(const QString& newText)
{
    if (multiLine)
        static_cast<QPlainTextEdit*>(widget)->setPlainText(newText);
    else
        static_cast<QLineEdit*>(widget)->setText(newText);
}

QString TextBox::ShownText() const
{
    return multiLine ? static_cast<QPlainTextEdit*>(widget)->toPlainText() : static_cast<QLineEdit*>(widget)->text();
}
