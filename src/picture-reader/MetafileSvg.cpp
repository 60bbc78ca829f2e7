#include "picture-reader/MetafileSvg.h"

#include <QString>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <emf2svg.h>
#include <libwmf/api.h>
#include <libwmf/svg.h>
#include <memory>

namespace {

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

}

std::optional<MetafileSvg> WmfToSvg(QByteArray bytes)
{
    std::array<wmfMapping, 14> fonts = FontFiles();
    wmfAPI_Options options{};
    options.function = wmf_svg_function;
    options.font.ps = fonts.data();
    constexpr unsigned long flags
        = WMF_OPT_FUNCTION | WMF_OPT_FONTMAP | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    wmfAPI* api = nullptr;
    if (wmf_api_create(&api, flags, &options) != wmf_E_None)
        return std::nullopt;
    const std::unique_ptr<wmfAPI, decltype(&wmf_api_destroy)> library(api, wmf_api_destroy);
    wmfD_Rect box{};
    unsigned int width = 0;
    unsigned int height = 0;
    if (wmf_mem_open(api, reinterpret_cast<unsigned char*>(bytes.data()), static_cast<long>(bytes.size())) != wmf_E_None
        || wmf_scan(api, 0, &box) != wmf_E_None || wmf_display_size(api, &width, &height, 96, 96) != wmf_E_None)
        return std::nullopt;

    wmf_svg_t* const device = WMF_SVG_GetData(api);
    device->out = wmf_stream_create(api, nullptr);
    device->width = width;
    device->height = height;
    device->bbox = box;
    device->flags |= WMF_SVG_INLINE_IMAGES;
    if (device->out == nullptr || wmf_play(api, 0, &box) != wmf_E_None)
        return std::nullopt;
    char* text = nullptr;
    unsigned long length = 0;
    wmf_stream_destroy(api, device->out, &text, &length);
    if (text == nullptr)
        return std::nullopt;
    MetafileSvg svg{
        QByteArray(text, static_cast<qsizetype>(length)), static_cast<double>(width), static_cast<double>(height)};
    wmf_free(api, text);
    Mend(svg.document);
    return svg;
}

std::optional<MetafileSvg> EmfToSvg(QByteArray bytes)
{
    constexpr qsizetype smallestHeader = 88;
    if (bytes.size() < smallestHeader)
        return std::nullopt;
    MetafileSvg svg{{}, NaturalSize(bytes, 0), NaturalSize(bytes, 1)};
    if (!(svg.width >= 1) || !(svg.height >= 1))
        return std::nullopt;
    generatorOptions options{};
    options.emfplus = true;
    options.svgDelimiter = true;
    char* text = nullptr;
    std::size_t length = 0;
    // The library writes into its input.
    const bool converted = emf2svg(bytes.data(), static_cast<std::size_t>(bytes.size()), &text, &length, &options) != 0
        && text != nullptr;
    if (converted)
        svg.document = QByteArray(text, static_cast<qsizetype>(length));
    std::free(text);
    return converted ? std::optional(std::move(svg)) : std::nullopt;
}
