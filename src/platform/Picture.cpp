#include "platform/Picture.h"

#include "platform/Metafile.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QScreen>
#include <fcntl.h>

namespace {

constexpr qint64 mostPixels = 64'000'000;

// What the toolkit's reader may take for one picture: four bytes for each pixel, and a little.
constexpr int mostMegabytes = 260;

// More pixels than the screen has cannot be seen.
QSize MostUseful()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize();
}

bool IsReasonable(const QSize& size)
{
    return size.width() > 0 && size.height() > 0 && qint64{size.width()} * size.height() <= mostPixels;
}

// An icon file holds the same picture in several sizes.
void GoToLargest(QImageReader& reader)
{
    int largest = 0;
    int mostSoFar = 0;
    for (int number = 0; number < reader.imageCount() && reader.jumpToImage(number); ++number) {
        const QSize size = reader.size();
        if (size.width() * size.height() > mostSoFar) {
            mostSoFar = size.width() * size.height();
            largest = number;
        }
    }
    reader.jumpToImage(largest);
}

Picture Read(QFile& file)
{
    // In the order of how often they come. The toolkit knows more formats, such as documents that name other files.
    static const QList<QByteArray> formats{"jpeg", "gif", "png", "bmp", "ico", "webp", "tiff"};
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QByteArray format = reader.format();
    if (!formats.contains(format))
        return {};
    if (format == "ico")
        GoToLargest(reader);
    QSize size = reader.size();
    if (!IsReasonable(size))
        return {};
    // The reader scales first and turns then.
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize most = turned ? MostUseful().transposed() : MostUseful();
    if (size.width() > most.width() || size.height() > most.height())
        reader.setScaledSize(size.scaled(most, Qt::KeepAspectRatio).expandedTo({1, 1}));
    QImage pixels = reader.read();
    if (pixels.isNull())
        return {};
    return Picture(std::move(pixels), turned ? size.transposed() : size);
}

Picture ReadMetafile(QFile& file)
{
    const QSize most = MostUseful();
    const auto metafile = RenderMetafile(file.handle(), most.width(), most.height());
    if (!metafile)
        return {};
    QImage pixels(reinterpret_cast<const uchar*>(metafile->pixels.data()), metafile->renderedWidth,
        metafile->renderedHeight, QImage::Format_RGB32);
    return Picture(pixels.copy(), {metafile->width, metafile->height});
}

}

Picture::Picture() = default;

Picture::Picture(QImage pixels)
    : Picture(pixels, pixels.size())
{
}

Picture::Picture(QImage pixels, const QSize& size)
    : image(std::make_shared<const QImage>(std::move(pixels)))
    , width(size.width())
    , height(size.height())
{
}

Picture Picture::FromFile(const std::string& path)
{
    // Not every path has a form that the toolkit can name.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return {};
    const QByteArray head = file.peek(metafileHeadLength);
    return IsMetafile({head.data(), static_cast<std::size_t>(head.size())}) ? ReadMetafile(file) : Read(file);
}
