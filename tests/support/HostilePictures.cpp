#include "tests/support/HostilePictures.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QtEndian>

namespace {

QByteArray Chunk(const QByteArray& content)
{
    quint32 sum = ~0U;
    for (const char byte : content) {
        sum ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (0xedb88320U & (0U - (sum & 1)));
    }
    QByteArray chunk(4, '\0');
    qToBigEndian(static_cast<quint32>(content.size() - 4), chunk.data());
    chunk += content + QByteArray(4, '\0');
    qToBigEndian(~sum, chunk.data() + chunk.size() - 4);
    return chunk;
}

}

std::string SlowJpeg(int scans)
{
    QImage image(8000, 7000, QImage::Format_Grayscale8);
    image.fill(Qt::gray);
    QByteArray file;
    QBuffer buffer(&file);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(true);
    writer.write(image);
    // FF DA begins a scan, FF D9 ends the picture. The last scan makes the others exact, and may do so again and again.
    const qsizetype scan = file.lastIndexOf(QByteArray("\xff\xda"));
    const QByteArray last = file.mid(scan, file.size() - scan - 2);
    file.insert(file.size() - 2, last.repeated(scans));
    return file.toStdString();
}

std::string PngWithTexts()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray file;
    QBuffer buffer(&file);
    image.save(&buffer, "PNG");
    // Behind the signature and the header; what qCompress writes before the packed bytes is its own.
    constexpr qsizetype behindHeader = 8 + 25;
    const QByteArray text = Chunk(QByteArray("zTXtA\0\0", 7) + qCompress(QByteArray(7'900'000, ' '), 9).mid(4));
    file.insert(behindHeader, text.repeated(100));
    return file.toStdString();
}
