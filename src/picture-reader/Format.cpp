#include "picture-reader/Format.h"

using namespace std::string_view_literals;

PictureFormat FormatOf(std::string_view head)
{
    struct Beginning {
        std::string_view bytes;
        PictureFormat format;
    };
    // Of the headers whose first bytes say little, the first fields are looked at too: those of a list of icons or
    // cursors; a plain WMF's kind (1 or 2), length of header (9 words) and version (1 or 3).
    static constexpr Beginning beginnings[] = {{"\xff\xd8"sv, PictureFormat::Jpeg}, {"GIF87a"sv, PictureFormat::Gif},
        {"GIF89a"sv, PictureFormat::Gif}, {"\x89PNG\r\n\x1a\n"sv, PictureFormat::Png}, {"BM"sv, PictureFormat::Bmp},
        {"\0\0\1\0"sv, PictureFormat::Icon}, {"\0\0\2\0"sv, PictureFormat::Icon}, {"II*\0"sv, PictureFormat::Tiff},
        {"MM\0*"sv, PictureFormat::Tiff}, {"II+\0"sv, PictureFormat::Tiff}, {"MM\0+"sv, PictureFormat::Tiff},
        {"\xd7\xcd\xc6\x9a"sv, PictureFormat::Wmf}, {"\1\0\x09\0\0\1"sv, PictureFormat::Wmf},
        {"\1\0\x09\0\0\3"sv, PictureFormat::Wmf}, {"\2\0\x09\0\0\1"sv, PictureFormat::Wmf},
        {"\2\0\x09\0\0\3"sv, PictureFormat::Wmf}};
    for (const Beginning& beginning : beginnings) {
        if (head.starts_with(beginning.bytes))
            return beginning.format;
    }
    if (head.starts_with("RIFF"sv) && head.size() >= 12 && head.substr(8, 4) == "WEBP"sv)
        return PictureFormat::WebP;
    // An enhanced metafile begins with a header record, number 1, which has " EMF" at its byte 40.
    if (head.starts_with("\1\0\0\0"sv) && head.size() >= formatHeadLength && head.substr(40, 4) == " EMF"sv)
        return PictureFormat::Emf;
    return PictureFormat::None;
}
