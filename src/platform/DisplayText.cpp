#include "platform/DisplayText.h"

#include "base/Characters.h"

#include <QStringDecoder>
#include <QTextDocument>
#include <algorithm>

namespace {

// Cannot be seen, or turns round what stands beside it.
bool IsMark(char16_t character)
{
    return character == 0x061c || (character >= 0x200b && character <= 0x200f)
        || (character >= 0x2028 && character <= 0x202e) || (character >= 0x2060 && character <= 0x206f)
        || character == 0xfeff;
}

bool IsControl(char16_t character)
{
    return (character < 0x20 && character != u'\n' && character != u'\r') || (character >= 0x7f && character < 0xa0);
}

}

QString ToDisplay(std::string_view bytes)
{
    const auto size = static_cast<qsizetype>(bytes.size());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(QByteArrayView(bytes.data(), size));
    if (!decoder.hasError())
        return text;
    text.clear();
    text.reserve(size);
    for (const char byte : bytes) {
        const auto character = static_cast<char16_t>(FromWindows1252(byte));
        text += character == 0 && byte != 0 ? QChar(QChar::ReplacementCharacter) : QChar(character);
    }
    return text;
}

std::string FromDisplay(const QString& text) { return text.toStdString(); }

QString ToShow(std::string_view bytes)
{
    constexpr std::size_t longest = 2000;
    std::size_t length = std::min(bytes.size(), longest);
    // Not through a character of UTF-8.
    while (length < bytes.size() && length > 0 && (static_cast<unsigned char>(bytes[length]) & 0xc0) == 0x80)
        --length;
    QString text = ToDisplay(bytes.substr(0, length));
    if (length < bytes.size())
        text += u'\u2026';
    for (QChar& character : text) {
        if (IsControl(character.unicode()))
            character = QChar::ReplacementCharacter;
    }
    return WithMarksMasked(text);
}

QString WithMarksMasked(QString text)
{
    for (QChar& character : text) {
        if (IsMark(character.unicode()))
            character = QChar::ReplacementCharacter;
    }
    return text;
}

QString ToToolTip(const QString& shown)
{
    return Qt::mightBeRichText(shown) ? QLatin1String("<qt>") + shown.toHtmlEscaped() : shown;
}
