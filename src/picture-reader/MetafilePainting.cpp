#include "picture-reader/MetafilePainting.h"

#include "picture-reader/MetafileSvg.h"
#include "picture-reader/Protocol.h"

#include <QFile>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <filesystem>
#include <fontconfig/fontconfig.h>
#include <iconv.h>
#include <utility>

// A library that looks up fonts lets go of all fonts behind each metafile. The toolkit goes on with them, and they
// could not be had again: what they are listed in cannot be opened any more.
extern "C" void FcFini() { }

namespace {

constexpr qint64 mostBytes = 64 << 20;

QImage Paint(const MetafileSvg& svg, const QSize& size)
{
    if (!NamesNoFile(svg.document))
        return {};
    QSvgRenderer renderer(svg.document);
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

// What the texts of metafiles are written in; the C library loads what converts from each, and keeps it while it is in
// use.
bool LoadEncodings()
{
    bool loaded = true;
    for (const char* encoding : {"UTF-16LE", "UTF-32LE", "LATIN1"}) {
        for (const auto& [to, from] : {std::pair("UTF-8", encoding), {encoding, "UTF-8"}})
            loaded = loaded && iconv_open(to, from) != reinterpret_cast<iconv_t>(-1); // to the end of the process
    }
    return loaded;
}

}

bool LoadFonts()
{
    // The toolkit looks for plugins in the program's own directory too, where a user may have let downloads go to. It
    // leaves out what was taken off the list before it starts, but only what was on the list then.
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    qputenv("QT_PLUGIN_PATH", own.c_str());
    QCoreApplication::setLibraryPaths({QLibraryInfo::path(QLibraryInfo::PluginsPath)});
    qputenv("TMPDIR", "/proc"); // where the toolkit can make no directory for what it runs by
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    static int argumentCount = 1;
    static char name[] = "tamarack-picture";
    static char* arguments[] = {name, nullptr};
    new QGuiApplication(argumentCount, arguments); // to the end of the process
    FcConfigSetRescanInterval(nullptr, 0);
    // Everything that a first text needs: the list of fonts, a font, and what turns its letters into outlines.
    QImage image(20, 20, QImage::Format_RGB32);
    QPainter(&image).drawText(image.rect(), QStringLiteral("A"));
    return LoadEncodings() && !QCoreApplication::libraryPaths().contains(QFile::decodeName(own.c_str()));
}

bool NamesNoFile(const QByteArray& document)
{
    QXmlStreamReader reader(document);
    // As the toolkit's SVG reader reads it, which looks at the prefixed names.
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        reader.readNext();
        // An instruction may name a style sheet. Attributes are those of a start element alone.
        if ((reader.isDTD() && !reader.entityDeclarations().isEmpty()) || reader.isProcessingInstruction())
            return false;
        for (const QXmlStreamAttribute& attribute : reader.attributes()) {
            const QStringView value = attribute.value().trimmed();
            if (attribute.qualifiedName().endsWith(QLatin1String("href")) && !value.startsWith(QLatin1Char('#'))
                && !value.startsWith(QLatin1String("data:image/")))
                return false;
        }
    }
    return !reader.hasError();
}

ReadPicture ReadMetafile(int descriptor, PictureFormat format, const QSize& most)
{
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly) || file.size() > mostBytes)
        return {};
    const auto svg = format == PictureFormat::Emf ? EmfToSvg(file.readAll()) : WmfToSvg(file.readAll());
    if (!svg || !(svg->width >= 1 && svg->height >= 1 && svg->width * svg->height <= static_cast<double>(mostPixels)))
        return {};
    const QSize natural = QSizeF(svg->width, svg->height).toSize();
    QSize size = natural;
    if (size.width() > most.width() || size.height() > most.height())
        size = size.scaled(most, Qt::KeepAspectRatio);
    return {Paint(*svg, size.expandedTo({1, 1})), natural};
}
