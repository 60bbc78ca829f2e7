#include "platform/DisplayText.h"

#include <QStringDecoder>
#include <QTextDocument>
#include <algorithm>
#include <array>

namespace {

// Windows-1252 differs from Latin-1 only in 0x80 to 0x9F. The five positions that it leaves free show the
// replacement character.
constexpr std::array<char16_t, 32> windows1252HighControls{0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020,
    0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D,
    0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

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
    text = QString::fromLatin1(bytes.data(), size);
    for (QChar& character : text) {
        if (character.unicode() >= 0x80 && character.unicode() < 0xA0)
            character = windows1252HighControls[character.unicode() - 0x80U];
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
