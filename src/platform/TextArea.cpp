#include "platform/TextArea.h"

#include "platform/DisplayText.h"

#include <QPlainTextEdit>
#include <algorithm>

namespace {

QPlainTextEdit* MakeEdit(TextAreaStyle style)
{
    auto* edit = new QPlainTextEdit;
    edit->setReadOnly(true);
    edit->setTabChangesFocus(true);
    if (style == TextAreaStyle::Wrapped) {
        edit->document()->setDocumentMargin(1);
        edit->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        edit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        return edit;
    }
    edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    edit->setUndoRedoEnabled(false);
    edit->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    edit->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    QFont typewriter(QStringLiteral("Courier New"));
    typewriter.setStyleHint(QFont::Monospace);
    edit->setFont(typewriter);
    return edit;
}

}

TextArea::TextArea(Container& container, std::string_view name, const Place& place, TextAreaStyle style)
    : Control(container, MakeEdit(style), name, place)
{
}

void TextArea::SetText(std::string_view newText)
{
    // A part of it may be marked.
    if (newText == text)
        return;
    text = newText;
    As<QPlainTextEdit>().setPlainText(WithMarksMasked(ToDisplay(newText)));
}

int TextArea::Length() const { return As<QPlainTextEdit>().document()->characterCount() - 1; }

void TextArea::Cut(int from, int count)
{
    QTextCursor cursor(As<QPlainTextEdit>().document());
    cursor.setPosition(std::min(from, Length()));
    cursor.setPosition(std::min(from + count, Length()), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

void TextArea::Append(std::string_view newText, int most)
{
    auto& edit = As<QPlainTextEdit>();
    QTextCursor cursor(edit.document());
    cursor.movePosition(QTextCursor::End);
    // A line end may come in two pieces.
    QString shown = WithMarksMasked(ToDisplay(newText));
    if (endedInCr && shown.startsWith(u'\n'))
        shown.remove(0, 1);
    endedInCr = shown.endsWith(u'\r');
    cursor.insertText(shown.replace(QLatin1String("\r\n"), QLatin1String("\n")).right(most));
    edit.setTextCursor(cursor);
    edit.ensureCursorVisible();
}

void TextArea::Clear()
{
    As<QPlainTextEdit>().clear();
    text.clear();
    endedInCr = false;
}
