#include "platform/Artwork.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

Bitmap Artwork::Banner()
{
    QSvgRenderer drawing(QStringLiteral(":/artwork/banner.svg"));
    QImage image(drawing.defaultSize(), QImage::Format_RGB32);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    return Bitmap(std::move(image));
}
