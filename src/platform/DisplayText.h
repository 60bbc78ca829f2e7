#pragma once

#include <QString>
#include <string>
#include <string_view>

// The border between the program's bytes and the toolkit's characters. For platform/ alone.

// Valid UTF-8 is shown as such, anything else as Windows-1252.
QString ToDisplay(std::string_view bytes);

// What the user typed, as UTF-8.
std::string FromDisplay(const QString& text);

// The same for what is only looked at. Controls and direction marks, with which a name could pass for another or break
// up the line that it stands in, show as the replacement character; line ends stay. Of a text beyond 2,000 bytes, which
// nobody reads and which would take the toolkit minutes to set, the end shows as an ellipsis.
QString ToShow(std::string_view bytes);

// A text for a tool tip, which would else be taken for rich text if it looks so.
QString ToToolTip(const QString& shown);

// A text of a field, whole, with the replacement character for each direction mark and each character without width.
QString WithMarksMasked(QString text);
