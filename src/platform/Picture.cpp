#include "platform/Picture.h"

#include <QFile>
#include <QImage>
#include <QImageReader>

Picture::Picture() = default;

Picture Picture::FromFile(const std::string& path)
{
    QImageReader reader(QFile::decodeName(path.c_str()));
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    Picture picture;
    QImage image = reader.read();
    if (!image.isNull())
        picture.image = std::make_shared<const QImage>(std::move(image));
    return picture;
}

int Picture::Width() const { return image ? image->width() : 0; }

int Picture::Height() const { return image ? image->height() : 0; }
