#include "picture-reader/Reading.h"

#include <QtEndian>

// 89 50 4E 47 0D 0A 1A 0A, and then chunks: the length of the data, four letters, the data, a checksum of four bytes.
QByteArray PixelParts(const QByteArray& png)
{
    constexpr qsizetype signatureLength = 8;
    constexpr qsizetype frameLength = 12;
    QByteArray parts = png.left(signatureLength);
    for (qsizetype at = signatureLength; png.size() - at >= frameLength;) {
        const qsizetype length
            = qMin(frameLength + qsizetype{qFromBigEndian<quint32>(png.constData() + at)}, png.size() - at);
        const QByteArrayView kind(png.constData() + at + 4, 4);
        if (kind == "IHDR" || kind == "PLTE" || kind == "tRNS" || kind == "IDAT" || kind == "IEND")
            parts.append(png.constData() + at, length);
        if (kind == "IEND")
            break;
        at += length;
    }
    return parts;
}
