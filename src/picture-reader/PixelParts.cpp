#include "picture-reader/Reading.h"

#include <QtEndian>

namespace {

// 89 50 4E 47 0D 0A 1A 0A, and then chunks: the length of the data, four letters, the data, a checksum of four bytes.
QByteArray PixelChunks(const QByteArray& file)
{
    constexpr qsizetype signatureLength = 8;
    constexpr qsizetype frameLength = 12;
    QByteArray parts = file.left(signatureLength);
    for (qsizetype at = signatureLength; file.size() - at >= frameLength;) {
        const qsizetype length
            = qMin(frameLength + qsizetype{qFromBigEndian<quint32>(file.constData() + at)}, file.size() - at);
        const QByteArrayView kind(file.constData() + at + 4, 4);
        if (kind == "IHDR" || kind == "PLTE" || kind == "tRNS" || kind == "IDAT" || kind == "IEND")
            parts.append(file.constData() + at, length);
        if (kind == "IEND")
            break;
        at += length;
    }
    return parts;
}

// FF D8, and then segments: FF, a marker, a length of two bytes that counts itself, the data. What is behind the first
// header of a scan (FF DA) is for the reader.
QByteArray PixelSegments(const QByteArray& file)
{
    constexpr uchar scan = 0xda;
    constexpr uchar comment = 0xfe;
    constexpr uchar firstOfApplications = 0xe0; // the size of the pixels
    constexpr uchar exif = 0xe1;
    constexpr uchar adobe = 0xee; // the kind of colours
    constexpr uchar lastOfApplications = 0xef;
    QByteArray parts = file.left(2);
    qsizetype at = parts.size();
    while (file.size() - at >= 4) {
        const auto* segment = reinterpret_cast<const uchar*>(file.constData() + at);
        const uchar marker = segment[1];
        const qsizetype length = 2 + qsizetype{qFromBigEndian<quint16>(segment + 2)};
        if (segment[0] == 0xff && marker == 0xff) { // filling
            ++at;
            continue;
        }
        if (segment[0] != 0xff || marker == scan || length < 4 || file.size() - at < length)
            break;
        const QByteArrayView content(file.constData() + at + 4, length - 4);
        const bool ofApplication = marker >= firstOfApplications && marker <= lastOfApplications;
        const bool kept = ofApplication
            ? marker == firstOfApplications || marker == adobe || (marker == exif && content.startsWith("Exif"))
            : marker != comment;
        if (kept)
            parts.append(file.constData() + at, length);
        at += length;
    }
    return parts.append(file.constData() + at, file.size() - at);
}

}

QByteArray PixelParts(const QByteArray& file, PictureFormat format)
{
    return format == PictureFormat::Png ? PixelChunks(file) : PixelSegments(file);
}
