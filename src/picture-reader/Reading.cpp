#include "picture-reader/Reading.h"

#include "picture-reader/Protocol.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QImageReader>
#include <QLibrary>
#include <QLibraryInfo>
#include <QtEndian>
#include <QtPlugin>

namespace {

// What the toolkit's reader may take for one picture: four bytes for each pixel, and a little.
constexpr int mostMegabytes = 260;

// As the toolkit calls them, by their formats.
constexpr const char* names[] = {"", "jpeg", "gif", "png", "bmp", "ico", "webp", "tiff"};

// The format is told, so that none of the toolkit's readers is asked whether it knows the file.
ReadPicture ReadFrom(QIODevice& device, PictureFormat format, const QSize& most, int number = 0)
{
    QImageReader reader(&device, names[static_cast<std::size_t>(format)]);
    reader.setAutoDetectImageFormat(false);
    if (number > 0)
        reader.jumpToImage(number);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isEmpty() || static_cast<quint64>(size.width()) * static_cast<quint64>(size.height()) > mostPixels)
        return {};
    // The reader scales first and turns then.
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize room = turned ? most.transposed() : most;
    if (size.width() > room.width() || size.height() > room.height())
        reader.setScaledSize(size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1}));
    return {reader.read(), turned ? size.transposed() : size};
}

ReadPicture ReadBytes(const QByteArray& bytes, PictureFormat format, const QSize& most, int number = 0)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return ReadFrom(buffer, format, most, number);
}

// An icon file holds the same picture in several sizes. 00 00 01 00, their number, and for each 16 bytes: width and
// height (0 is 256), six bytes of other things, the length of its data and their place, which are a PNG file or a BMP
// without its first header.
ReadPicture ReadLargest(const QByteArray& file, const QSize& most)
{
    constexpr qsizetype headerLength = 6;
    constexpr qsizetype entryLength = 16;
    if (file.size() < headerLength)
        return {};
    const int count = qFromLittleEndian<quint16>(file.constData() + 4);
    int largest = 0;
    int mostSoFar = 0;
    QByteArray largestData;
    for (int number = 0; number < count && headerLength + (number + 1) * entryLength <= file.size(); ++number) {
        const auto* entry = reinterpret_cast<const uchar*>(file.constData()) + headerLength + number * entryLength;
        const int area = (entry[0] == 0 ? 256 : entry[0]) * (entry[1] == 0 ? 256 : entry[1]);
        if (area <= mostSoFar)
            continue;
        largest = number;
        mostSoFar = area;
        largestData = file.mid(qFromLittleEndian<quint32>(entry + 12), qFromLittleEndian<quint32>(entry + 8));
    }
    if (FormatOf({largestData.constData(), static_cast<std::size_t>(largestData.size())}) == PictureFormat::Png)
        return ReadBytes(PixelParts(largestData), PictureFormat::Png, most);
    return ReadBytes(file, PictureFormat::Icon, most, largest);
}

}

void LoadReaders()
{
    const QString directory = QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/imageformats/");
    for (const char* name : {"qjpeg", "qgif", "qico", "qwebp", "qtiff"}) {
        QLibrary library(directory + QStringLiteral("lib") + QLatin1String(name) + QStringLiteral(".so"));
        const auto instance = reinterpret_cast<QtPluginInstanceFunction>(library.resolve("qt_plugin_instance"));
        const auto metaData
            = reinterpret_cast<QtPluginMetaDataFunction>(library.resolve("qt_plugin_query_metadata_v2"));
        if (instance != nullptr && metaData != nullptr)
            qRegisterStaticPluginFunction(QStaticPlugin(instance, metaData));
    }
    QCoreApplication::setLibraryPaths({});
    QImageReader::setAllocationLimit(mostMegabytes);
    // The toolkit gathers what it has at its first use.
    (void)QImageReader::supportedImageFormats();
}

ReadPicture ReadPixels(int descriptor, PictureFormat format, const QSize& most)
{
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly))
        return {};
    if (format != PictureFormat::Png && format != PictureFormat::Icon)
        return ReadFrom(file, format, most);
    const uchar* const bytes = file.map(0, file.size());
    if (bytes == nullptr)
        return {};
    const QByteArray content = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), file.size());
    return format == PictureFormat::Icon ? ReadLargest(content, most) : ReadBytes(PixelParts(content), format, most);
}
