#include "platform/Picture.h"

#include <QFile>
#include <QImage>
#include <QImageReader>

Picture::Picture() = default;

Picture::Picture(QImage pixels)
    : image(std::make_shared<const QImage>(std::move(pixels)))
{
}

Picture Picture::FromFile(const std::string& path)
{
    QImageReader reader(QFile::decodeName(path.c_str()));
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    QImage pixels = reader.read();
    return pixels.isNull() ? Picture() : Picture(std::move(pixels));
}

int Picture::Width() const { return image ? image->width() : 0; }

int Picture::Height() const { return image ? image->height() : 0; }
