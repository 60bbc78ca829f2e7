#include "picture-reader/MetafilePainting.h"
#include "tests/support/HostilePictures.h"

#include <gtest/gtest.h>

TEST(PixelParts, WithoutTextsAndProfiles)
{
    const QByteArray png = QByteArray::fromStdString(PngWithTexts());
    const QByteArray parts = PixelParts(png);
    EXPECT_LT(parts.size(), 200);
    EXPECT_TRUE(parts.startsWith(png.left(8 + 25)) && parts.endsWith(png.last(12)));
    // Cut off anywhere, it is no more than it was.
    for (qsizetype length = 0; length < 300; ++length)
        EXPECT_LE(PixelParts(png.left(length)).size(), length);
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
