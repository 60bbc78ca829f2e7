#include "platform/Bitmap.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

Bitmap::Bitmap(QImage pixels, const QSize& size)
    : image(std::make_shared<const QImage>(std::move(pixels)))
    , width(size.width())
    , height(size.height())
{
}

Bitmap Bitmap::Banner()
{
    QSvgRenderer drawing(QStringLiteral(":/artwork/banner.svg"));
    QImage image(drawing.defaultSize(), QImage::Format_RGB32);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    return {image, image.size()};
}
