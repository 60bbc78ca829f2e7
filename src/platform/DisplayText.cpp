#include "platform/DisplayText.h"

#include "base/Characters.h"

#include <QStringDecoder>
#include <QTextDocument>
#include <algorithm>

namespace {

// Cannot be seen, or turns round what stands beside it.
bool IsMark(QChar character)
{
    return character == u'\x061c' || (character >= u'\x200b' && character <= u'\x200f')
        || (character >= u'\x2028' && character <= u'\x202e') || (character >= u'\x2060' && character <= u'\x206f')
        || character == u'\xfeff';
}

bool IsControl(QChar character)
{
    return (character < u' ' && character != u'\n' && character != u'\r')
        || (character >= u'\x7f' && character < u'\xa0');
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
        const QChar character(FromWindows1252(byte));
        text += character.isNull() && byte != 0 ? QChar(QChar::ReplacementCharacter) : character;
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
    std::replace_if(text.begin(), text.end(), IsControl, QChar(QChar::ReplacementCharacter));
    return WithMarksMasked(text);
}

QString WithMarksMasked(QString text)
{
    std::replace_if(text.begin(), text.end(), IsMark, QChar(QChar::ReplacementCharacter));
    return text;
}

QString ToToolTip(const QString& shown)
{
    return Qt::mightBeRichText(shown) ? QLatin1String("<qt>") + shown.toHtmlEscaped() : shown;
}
