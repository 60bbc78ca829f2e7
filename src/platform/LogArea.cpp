#include "platform/LogArea.h"

#include "platform/DisplayText.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <algorithm>

LogArea::LogArea(Container& container, std::string_view name, const Place& place)
    : Control(container, new QPlainTextEdit, name, place)
{
    auto* edit = static_cast<QPlainTextEdit*>(widget);
    edit->setReadOnly(true);
    edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    edit->setTabChangesFocus(true);
    edit->setUndoRedoEnabled(false);
    edit->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    edit->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    QFont typewriter(QStringLiteral("Courier New"));
    typewriter.setStyleHint(QFont::Monospace);
    edit->setFont(typewriter);
}

int LogArea::Length() const { return static_cast<QPlainTextEdit*>(widget)->document()->characterCount() - 1; }

void LogArea::Cut(int from, int count)
{
    QTextCursor cursor(static_cast<QPlainTextEdit*>(widget)->document());
    cursor.setPosition(std::min(from, Length()));
    cursor.setPosition(std::min(from + count, Length()), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

void LogArea::Append(std::string_view text, int most)
{
    auto* edit = static_cast<QPlainTextEdit*>(widget);
    QTextCursor cursor(edit->document());
    cursor.movePosition(QTextCursor::End);
    // A line end may come in two pieces.
    QString shown = WithMarksMasked(ToDisplay(text));
    if (endedInCr && shown.startsWith(u'\n'))
        shown.remove(0, 1);
    endedInCr = shown.endsWith(u'\r');
    cursor.insertText(shown.replace(QLatin1String("\r\n"), QLatin1String("\n")).right(most));
    edit->setTextCursor(cursor);
    edit->ensureCursorVisible();
}

void LogArea::Clear()
{
    static_cast<QPlainTextEdit*>(widget)->clear();
    endedInCr = false;
}
