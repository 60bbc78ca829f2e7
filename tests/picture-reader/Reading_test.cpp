#include "picture-reader/MetafilePainting.h"
#include "tests/support/HostilePictures.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

TEST(PixelParts, WithoutTextsAndProfiles)
{
    const QByteArray png = QByteArray::fromStdString(PngWithTexts());
    const QByteArray parts = PixelParts(png, PictureFormat::Png);
    EXPECT_LT(parts.size(), 200);
    EXPECT_TRUE(parts.startsWith(png.left(8 + 25)) && parts.endsWith(png.last(12)));

    const auto segment = [](char marker, std::string content) {
        return "\xff"s + marker + '\0' + static_cast<char>(content.size() + 2) + content;
    };
    const std::string kept = segment('\xe1', "Exif\0\0II*\0"s) + segment('\xdb', "table");
    const std::string scan = segment('\xda', "header") + "pixels \xff\xfe";
    const std::string jpeg = "\xff\xd8" + segment('\xe0', "JFIF") + segment('\xfe', "comment")
        + segment('\xe2', "ICC_PROFILE") + segment('\xe1', "http://ns.adobe.com/xap/") + kept + scan;
    EXPECT_EQ(PixelParts(QByteArray::fromStdString(jpeg), PictureFormat::Jpeg).toStdString(),
        "\xff\xd8" + segment('\xe0', "JFIF") + kept + scan);
    // Cut off anywhere, it is no more than it was.
    for (std::size_t length = 0; length <= jpeg.size(); ++length)
        EXPECT_LE(PixelParts(QByteArray::fromStdString(jpeg.substr(0, length)), PictureFormat::Jpeg).size(), length);
    for (qsizetype length = 0; length < 300; ++length)
        EXPECT_LE(PixelParts(png.left(length), PictureFormat::Png).size(), length);
}

TEST(Metafiles, NameNoFile)
{
    const auto names = [](const QByteArray& content) { return !NamesNoFile("<svg>" + content + "</svg>"); };
    EXPECT_FALSE(names("<text font-family=\"/etc/passwd\">file:///etc/passwd</text>"));
    EXPECT_FALSE(names("<use xlink:href=\"#a\"/><image xlink:href=\"data:image/png;base64,AA==\"/>"));
    for (const char* const content : {"<image xlink:href='/etc/passwd'/>", "<image href='a'/>", "<image x:href=' a'/>",
             "<image xlink:href='&#47;a'/>", "<image xlink:href=''/>", "<use xlink:href='file:///a#b'/>", "<g>", "&a;",
             "<?xml-stylesheet type='text/css' href='/a.css'?>"})
        EXPECT_TRUE(names(content)) << content;
    EXPECT_FALSE(NamesNoFile("<!DOCTYPE svg [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><svg>&a;</svg>"));
    EXPECT_FALSE(NamesNoFile(""));
}
