#include "platform/TextBox.h"

#include "platform/Buttons.h"
#include "platform/DisplayText.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <algorithm>

namespace {

class LineEdit : public QLineEdit {
public:
    explicit LineEdit(TextBox& ownerBox)
        : box(ownerBox)
    {
    }

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        QLineEdit::mouseDoubleClickEvent(event);
        Raise(box.DblClick);
    }

private:
    TextBox& box;
};

}

TextBox::TextBox(Container& container, std::string_view name, const Place& place, const TextBoxStyle& style)
    : Control(container, new LineEdit(*this), name, place)
    , masked(style.masked)
{
    QLineEdit& edit = As<QLineEdit>();
    edit.setReadOnly(style.readOnly);
    edit.setPlaceholderText(ToDisplay(style.hint));
    if (style.maxLength > 0)
        edit.setMaxLength(style.maxLength);
    if (masked) {
        edit.setEchoMode(QLineEdit::Password);
        edit.setStyleSheet(QStringLiteral("lineedit-password-character: 42"));
    }
    SetText(style.text);
    QObject::connect(&edit, &QLineEdit::textChanged, &edit, [this] { TakeEditedText(); });
}

void TextBox::SetText(std::string_view newText)
{
    // Somebody may be typing into it.
    if (newText == text)
        return;
    const QString wanted = ToDisplay(newText);
    Show(Masked(wanted));
    const QString shown = As<QLineEdit>().text();
    // The field may have cut it at its limit.
    const bool cut = shown.size() < wanted.size() && Masked(wanted).startsWith(shown);
    Take(cut ? FromDisplay(wanted.left(shown.size())) : std::string(newText));
}

void TextBox::SelectAll() { As<QLineEdit>().selectAll(); }

void TextBox::EnterPresses(const CommandButton& button)
{
    QObject::connect(&As<QLineEdit>(), &QLineEdit::returnPressed, &As<QLineEdit>(), [&button] {
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
    const QString shown = As<QLineEdit>().text();
    const qsizetype shorter = std::min(shown.size(), shownBefore.size());
    qsizetype head = 0;
    while (head < shorter && shown[head] == shownBefore[head])
        ++head;
    qsizetype tail = 0;
    while (tail < shorter - head && shown[shown.size() - 1 - tail] == shownBefore[shownBefore.size() - 1 - tail])
        ++tail;
    const QString edited = before.left(head) + shown.mid(head, shown.size() - head - tail) + before.right(tail);
    if (Masked(edited) != shown) {
        const int cursor = As<QLineEdit>().cursorPosition();
        Show(Masked(edited));
        As<QLineEdit>().setCursorPosition(cursor);
    }
    Take(FromDisplay(edited));
}

QString TextBox::Masked(const QString& newText) const { return masked ? newText : WithMarksMasked(newText); }

void TextBox::Show(const QString& newText)
{
    const QSignalBlocker quiet(As<QLineEdit>());
    As<QLineEdit>().setText(newText);
}
