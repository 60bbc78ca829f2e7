#include "picture-reader/MetafileSvg.h"

#include <libwmf/api.h>
#include <libwmf/svg.h>

#include <array>

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

void ReplaceAll(std::string& text, std::string_view from, std::string_view to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// The bytes of a text as they came: not marked up, and in Windows' code page.
std::string MarkedUp(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x20)
            text += ' ';
        else if (code >= 0x7f || byte == '&' || byte == '<' || byte == '>')
            text += "&#" + std::to_string(code) + ';';
        else
            text += byte;
    }
    return text;
}

void MarkUpTexts(std::string& document)
{
    constexpr std::string_view begin = "<text ";
    constexpr std::string_view endOfTag = "\n\t>";
    constexpr std::string_view end = "</text>";
    for (std::size_t at = document.find(begin); at != std::string::npos; at = document.find(begin, at)) {
        at = document.find(endOfTag, at);
        const std::size_t last = at == std::string::npos ? at : document.find(end, at);
        if (last == std::string::npos)
            return;
        at += endOfTag.size();
        const std::string text = MarkedUp(std::string_view(document).substr(at, last - at));
        document.replace(at, last - at, text);
        at += text.size();
    }
}

void Mend(std::string& document)
{
    MarkUpTexts(document);
    // An open line would be filled with SVG's default, black.
    ReplaceAll(document, "<polyline ", "<polyline fill=\"none\" ");
    // It takes the gaps of hatches and texts, which show what lies behind them, for the whole of a fill.
    ReplaceAll(document, "fill-opacity:0.5; ", "");
}

class Library {
public:
    Library()
    {
        options.function = wmf_svg_function;
        options.font.ps = fonts.data();
        constexpr unsigned long flags
            = WMF_OPT_FUNCTION | WMF_OPT_FONTMAP | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
        if (wmf_api_create(&api, flags, &options) != wmf_E_None)
            api = nullptr;
    }
    ~Library()
    {
        if (api != nullptr)
            wmf_api_destroy(api);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    wmfAPI* Api() const { return api; }

private:
    std::array<wmfMapping, 14> fonts = FontFiles();
    wmfAPI_Options options{};
    wmfAPI* api = nullptr;
};

}

std::optional<MetafileSvg> WmfToSvg(std::string bytes)
{
    const Library library;
    wmfAPI* const api = library.Api();
    wmfD_Rect box{};
    unsigned int width = 0;
    unsigned int height = 0;
    if (api == nullptr
        || wmf_mem_open(api, reinterpret_cast<unsigned char*>(bytes.data()), static_cast<long>(bytes.size()))
            != wmf_E_None
        || wmf_scan(api, 0, &box) != wmf_E_None || wmf_display_size(api, &width, &height, 96, 96) != wmf_E_None
        || width == 0 || height == 0)
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
    MetafileSvg svg{std::string(text, length), static_cast<double>(width), static_cast<double>(height)};
    wmf_free(api, text);
    Mend(svg.document);
    return svg;
}
