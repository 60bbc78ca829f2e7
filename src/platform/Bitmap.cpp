#include "platform/Bitmap.h"

#include "platform/PictureHelper.h"

#include <QGuiApplication>
#include <QScreen>
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

Bitmap::Bitmap() = default;

Bitmap::Bitmap(QImage pixels)
    : Bitmap(pixels, pixels.size())
{
}

Bitmap::Bitmap(QImage pixels, const QSize& size)
    : image(std::make_shared<const QImage>(std::move(pixels)))
    , width(size.width())
    , height(size.height())
{
}

Bitmap Bitmap::FromFile(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return {};
    std::optional<HelpersPicture> read;
    if (const PictureFormat format = FormatOfFile(descriptor); format != PictureFormat::None) {
        const QSize most = MostUseful();
        read = ReadInHelper(
            descriptor, {format, static_cast<std::uint32_t>(most.width()), static_cast<std::uint32_t>(most.height())});
    }
    close(descriptor);
    return read ? Bitmap(std::move(read->pixels), read->size) : Bitmap();
}
