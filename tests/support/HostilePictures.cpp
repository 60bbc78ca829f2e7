#include "tests/support/HostilePictures.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

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
