// tamarack-metafile MAX_WIDTH MAX_HEIGHT
//
// Reads one Windows metafile on standard input and writes its pixels to standard output, scaled down to the given size
// if it is larger. The libraries that read metafiles can be led astray by a malformed one. So they run here, where they
// may die or be killed without harm to anybody, with limits on memory and time, and with no file to write to.
//
// The answer: four unsigned 32-bit numbers, the picture's own width and height and those of the pixels that follow;
// then the pixels, row by row, each a 32-bit number 0xffRRGGBB. All in the order of bytes of this machine. No answer,
// and an exit code other than 0, if the file cannot be read.

#include "MetafileSvg.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/resource.h>

namespace {

constexpr std::size_t mostBytes = 64 << 20;
constexpr double mostPixels = 64e6;

bool SetLimit(int resource, rlim_t most)
{
    const rlimit limit{most, most};
    return setrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0;
}

bool SetLimits()
{
    return SetLimit(RLIMIT_AS, 512 << 20) && SetLimit(RLIMIT_CPU, 2) && SetLimit(RLIMIT_FSIZE, 0)
        && SetLimit(RLIMIT_CORE, 0);
}

std::string ReadInput()
{
    std::string bytes;
    std::array<char, 65536> part;
    while (bytes.size() <= mostBytes) {
        const std::size_t length = std::fread(part.data(), 1, part.size(), stdin);
        if (length == 0)
            break;
        bytes.append(part.data(), length);
    }
    return bytes;
}

// An enhanced metafile begins with a header record, number 1, which has " EMF" at its byte 40.
bool IsEnhanced(const std::string& bytes)
{
    return bytes.size() >= 44 && bytes[0] == 1 && bytes.compare(40, 4, " EMF") == 0;
}

QImage Paint(const MetafileSvg& svg, QSize size)
{
    QSvgRenderer renderer(QByteArray::fromRawData(svg.document.data(), static_cast<qsizetype>(svg.document.size())));
    const QRectF box = renderer.viewBoxF();
    if (!renderer.isValid())
        return {};
    if (!(box.width() >= 1 && box.height() >= 1 && box.width() < 1e5 && box.height() < 1e5))
        renderer.setViewBox(QRectF(0, 0, svg.width, svg.height));
    renderer.setAspectRatioMode(Qt::IgnoreAspectRatio);
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return {};
    // Metafiles are drawn on paper.
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

bool Write(const void* bytes, std::size_t length) { return std::fwrite(bytes, 1, length, stdout) == length; }

bool WriteAnswer(const MetafileSvg& svg, const QImage& image)
{
    const std::array<std::uint32_t, 4> header{static_cast<std::uint32_t>(svg.width),
        static_cast<std::uint32_t>(svg.height), static_cast<std::uint32_t>(image.width()),
        static_cast<std::uint32_t>(image.height())};
    bool written = Write(header.data(), sizeof header);
    for (int row = 0; row < image.height() && written; ++row)
        written = Write(image.constScanLine(row), 4 * static_cast<std::size_t>(image.width()));
    return written && std::fflush(stdout) == 0;
}

}

int main(int argc, char** argv)
{
    const int maxWidth = argc == 3 ? std::atoi(argv[1]) : 0;
    const int maxHeight = argc == 3 ? std::atoi(argv[2]) : 0;
    if (maxWidth < 1 || maxHeight < 1 || !SetLimits()) {
        std::fputs("usage: tamarack-metafile MAX_WIDTH MAX_HEIGHT <metafile >pixels\n", stderr);
        return EXIT_FAILURE;
    }
    std::string bytes = ReadInput();
    if (bytes.size() > mostBytes)
        return EXIT_FAILURE;
    const auto svg = IsEnhanced(bytes) ? EmfToSvg(std::move(bytes)) : WmfToSvg(std::move(bytes));
    if (!svg || !(svg->width >= 1 && svg->height >= 1 && svg->width * svg->height <= mostPixels))
        return EXIT_FAILURE;

    // Only texts need the toolkit's fonts, which take longer to start than the rest of the work.
    std::unique_ptr<QGuiApplication> application;
    if (svg->document.find("<text") != std::string::npos) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        argc = 1;
        application = std::make_unique<QGuiApplication>(argc, argv);
    }
    QSize size = QSizeF(svg->width, svg->height).toSize();
    if (size.width() > maxWidth || size.height() > maxHeight)
        size = size.scaled(maxWidth, maxHeight, Qt::KeepAspectRatio);
    const QImage image = Paint(*svg, size.expandedTo({1, 1}));
    return !image.isNull() && WriteAnswer(*svg, image) ? EXIT_SUCCESS : EXIT_FAILURE;
}
