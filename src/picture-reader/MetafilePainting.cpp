#include "picture-reader/MetafilePainting.h"

#include "picture-reader/Protocol.h"

#include <QFile>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <emf2svg.h>
#include <filesystem>
#include <fontconfig/fontconfig.h>
#include <iconv.h>
#include <libwmf/api.h>
#include <libwmf/svg.h>
#include <memory>
#include <utility>

// A library that looks up fonts lets go of all fonts behind each metafile. The toolkit goes on with them, and they
// could not be had again: what they are listed in cannot be opened any more.
extern "C" void FcFini() { }

namespace {

// A metafile as an SVG document, empty if it could not be read, with its natural size in pixels at 96 dots to the inch.
struct MetafileSvg {
    QByteArray document;
    double width = 0;
    double height = 0;
};

// Without Type 1 fonts on the machine the library refuses every picture, unless it is told of others. It measures with
// them; the letters are drawn by whoever draws the SVG.
constexpr const char* sans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr const char* sansBold = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";
constexpr const char* serif = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";
constexpr const char* serifBold = "/usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf";
constexpr const char* mono = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf";
constexpr const char* monoBold = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf";

wmfMapping FontFile(const char* postScriptName, const char* file)
{
    return {const_cast<char*>(postScriptName), const_cast<char*>(file), FT_ENCODING_NONE};
}

std::array<wmfMapping, 14> FontFiles()
{
    return {FontFile("Courier", mono), FontFile("Courier-Oblique", mono), FontFile("Courier-Bold", monoBold),
        FontFile("Courier-BoldOblique", monoBold), FontFile("Helvetica", sans), FontFile("Helvetica-Oblique", sans),
        FontFile("Helvetica-Bold", sansBold), FontFile("Helvetica-BoldOblique", sansBold),
        FontFile("Times-Roman", serif), FontFile("Times-Italic", serif), FontFile("Times-Bold", serifBold),
        FontFile("Times-BoldItalic", serifBold), FontFile("Symbol", serif), FontFile(nullptr, nullptr)};
}

// What the library writes is not quite what it means.

// The bytes of a text as they came: not marked up, and in Windows' code page.
QByteArray MarkedUp(const QByteArray& bytes)
{
    QString text = QString::fromLatin1(bytes);
    std::replace_if(
        text.begin(), text.end(), [](QChar character) { return character < u' '; }, u' ');
    return text.toHtmlEscaped().toUtf8();
}

void MarkUpTexts(QByteArray& document)
{
    const QByteArray endOfTag = "\n\t>";
    for (qsizetype at = document.indexOf("<text "); at >= 0; at = document.indexOf("<text ", at)) {
        at = document.indexOf(endOfTag, at);
        const qsizetype end = at < 0 ? at : document.indexOf("</text>", at);
        if (end < 0)
            return;
        at += endOfTag.size();
        const QByteArray text = MarkedUp(document.mid(at, end - at));
        document.replace(at, end - at, text);
        at += text.size();
    }
}

void Mend(QByteArray& document)
{
    MarkUpTexts(document);
    // An open line would be filled with SVG's default, black.
    document.replace("<polyline ", "<polyline fill=\"none\" ");
    // It takes the gaps of hatches and texts, which show what lies behind them, for the whole of a fill.
    document.replace("fill-opacity:0.5; ", "");
}

// The header's rectangles: the bounds in the units of the reference device, and the frame in hundredths of a
// millimetre.
constexpr qsizetype boundsAt = 8;
constexpr qsizetype frameAt = 24;

double Extent(const QByteArray& bytes, qsizetype rectangleAt, qsizetype axis)
{
    const char* const first = bytes.constData() + rectangleAt + 4 * axis;
    return static_cast<double>(qFromLittleEndian<qint32>(first + 8)) - qFromLittleEndian<qint32>(first);
}

double NaturalSize(const QByteArray& bytes, qsizetype axis)
{
    constexpr double hundredthsOfMillimetreToPixels = 96 / 2540.0;
    const double frame = Extent(bytes, frameAt, axis) * hundredthsOfMillimetreToPixels;
    return frame >= 1 ? frame : Extent(bytes, boundsAt, axis);
}

// WMF, with the placeable header of 22 bytes or without it ([MS-WMF]).
MetafileSvg WmfToSvg(QByteArray bytes)
{
    std::array<wmfMapping, 14> fonts = FontFiles();
    wmfAPI_Options options{};
    options.function = wmf_svg_function;
    options.font.ps = fonts.data();
    constexpr unsigned long flags
        = WMF_OPT_FUNCTION | WMF_OPT_FONTMAP | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    wmfAPI* api = nullptr;
    if (wmf_api_create(&api, flags, &options) != wmf_E_None)
        return {};
    const std::unique_ptr<wmfAPI, decltype(&wmf_api_destroy)> library(api, wmf_api_destroy);
    wmfD_Rect box{};
    unsigned int width = 0;
    unsigned int height = 0;
    if (wmf_mem_open(api, reinterpret_cast<unsigned char*>(bytes.data()), static_cast<long>(bytes.size())) != wmf_E_None
        || wmf_scan(api, 0, &box) != wmf_E_None || wmf_display_size(api, &width, &height, 96, 96) != wmf_E_None)
        return {};

    wmf_svg_t* const device = WMF_SVG_GetData(api);
    device->out = wmf_stream_create(api, nullptr);
    device->width = width;
    device->height = height;
    device->bbox = box;
    device->flags |= WMF_SVG_INLINE_IMAGES;
    if (device->out == nullptr || wmf_play(api, 0, &box) != wmf_E_None)
        return {};
    char* text = nullptr;
    unsigned long length = 0;
    wmf_stream_destroy(api, device->out, &text, &length);
    if (text == nullptr)
        return {};
    MetafileSvg svg{
        QByteArray(text, static_cast<qsizetype>(length)), static_cast<double>(width), static_cast<double>(height)};
    wmf_free(api, text);
    Mend(svg.document);
    return svg;
}

// EMF and EMF+ ([MS-EMF]).
MetafileSvg EmfToSvg(QByteArray bytes)
{
    constexpr qsizetype smallestHeader = 88;
    if (bytes.size() < smallestHeader)
        return {};
    MetafileSvg svg{{}, NaturalSize(bytes, 0), NaturalSize(bytes, 1)};
    if (!(svg.width >= 1 && svg.height >= 1))
        return {};
    generatorOptions options{};
    options.emfplus = true;
    options.svgDelimiter = true;
    char* text = nullptr;
    std::size_t length = 0;
    // The library writes into its input.
    if (emf2svg(bytes.data(), static_cast<std::size_t>(bytes.size()), &text, &length, &options) != 0)
        svg.document = QByteArray(text, static_cast<qsizetype>(length));
    std::free(text);
    return svg;
}

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
    if (!(svg.width >= 1 && svg.height >= 1 && svg.width * svg.height <= static_cast<double>(mostPixels)))
        return {};
    const QSize natural = QSizeF(svg.width, svg.height).toSize();
    QSize size = natural;
    if (size.width() > most.width() || size.height() > most.height())
        size = size.scaled(most, Qt::KeepAspectRatio);
    return {Paint(svg, size.expandedTo({1, 1})), natural};
}
