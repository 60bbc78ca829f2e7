#include "platform/TextBox.h"

#include "platform/Buttons.h"
#include "platform/DisplayText.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTextDocument>
#include <algorithm>

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
    , masked(style.masked)
{
    SetText(style.text);
    const auto edited = [this] {
        if (!settingFromCode)
            TakeEditedText();
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
    const QString wanted = ToDisplay(newText);
    SetShownText(Masked(wanted));
    const QString shown = ShownText();
    // The field may have cut it at its limit.
    const bool cut = shown.size() < wanted.size() && Masked(wanted).startsWith(shown);
    Take(cut ? FromDisplay(wanted.left(shown.size())) : std::string(newText));
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

// What stands before and behind the place of the edit is as it was, what is masked there included.
void TextBox::TakeEditedText()
{
    const QString before = ToDisplay(text);
    const QString shownBefore = Masked(before);
    const QString shown = ShownText();
    const qsizetype shorter = std::min(shown.size(), shownBefore.size());
    qsizetype head = 0;
    while (head < shorter && shown[head] == shownBefore[head])
        ++head;
    qsizetype tail = 0;
    while (tail < shorter - head && shown[shown.size() - 1 - tail] == shownBefore[shownBefore.size() - 1 - tail])
        ++tail;
    const QString edited = before.left(head) + shown.mid(head, shown.size() - head - tail) + before.right(tail);
    if (Masked(edited) != shown && !multiLine) {
        auto* edit = static_cast<QLineEdit*>(widget);
        const int cursor = edit->cursorPosition();
        SetShownText(Masked(edited));
        edit->setCursorPosition(cursor);
    }
    Take(FromDisplay(edited));
}

QString TextBox::Masked(const QString& newText) const { return masked ? newText : WithMarksMasked(newText); }

void TextBox::SetShownText(const QString& newText)
{
    settingFromCode = true;
    if (multiLine)
        static_cast<QPlainTextEdit*>(widget)->setPlainText(newText);
    else
        static_cast<QLineEdit*>(widget)->setText(newText);
    settingFromCode = false;
}

QString TextBox::ShownText() const
{
    return multiLine ? static_cast<QPlainTextEdit*>(widget)->toPlainText() : static_cast<QLineEdit*>(widget)->text();
}
