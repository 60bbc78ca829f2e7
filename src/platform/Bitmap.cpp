#include "platform/Bitmap.h"

#include "base/Descriptor.h"
#include "platform/PictureHelper.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QSvgRenderer>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// More pixels than the screen has cannot be seen.
QSize MostUseful()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize().expandedTo({1, 1});
}

PictureFormat FormatOfFile(int descriptor)
{
    std::array<char, formatHeadLength> head{};
    struct stat status { };
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return PictureFormat::None;
    const ssize_t length = pread(descriptor, head.data(), head.size(), 0);
    return FormatOf({head.data(), static_cast<std::size_t>(length < 0 ? 0 : length)});
}

}

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

Bitmap Bitmap::FromFile(const std::string& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen())
        return {};
    std::optional<HelpersPicture> read;
    if (const PictureFormat format = FormatOfFile(file.Number()); format != PictureFormat::None) {
        const QSize most = MostUseful();
        read = ReadInHelper(file.Number(),
            {format, static_cast<std::uint32_t>(most.width()), static_cast<std::uint32_t>(most.height())});
    }
    return read ? Bitmap(std::move(read->pixels), read->size) : Bitmap();
}
