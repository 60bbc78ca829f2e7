#include "decoder/AttachmentName.h"

#include <gtest/gtest.h>

namespace {

std::string Times(std::size_t count, std::string_view text)
{
    std::string repeated;
    while (count-- > 0)
        repeated += text;
    return repeated;
}

TEST(AttachmentName, IsABareVisibleNameInUtf8)
{
    struct Row {
        const char* what;
        std::string name;
        std::string safe;
    };
    const std::string beyond = Times(200, "\xc3\xa4"); // 400 bytes
    for (const Row& row :
        {
            Row{"quoted path", "\"C:\\My Pictures\\red.jpg\"", "red.jpg"},
            Row{"quotes inside", "a \"red\" one.jpg", "a \"red\" one.jpg"},
            Row{"both separators", "a\\../b/..\\red.jpg", "red.jpg"},
            Row{"nothing behind the path", "pictures/", "attachment"},
            Row{"dots and blanks", " . .. ", "attachment"},
            Row{"hidden behind controls", "\x01.\xef\xbb\xbf.bashrc", "bashrc"},
            Row{"behind a hyphen", " -rf.jpg", "_-rf.jpg"},
            Row{"shown as nothing", "red\xc2\xad\xe1\xa0\x8e\xe2\xa0\x80\xe3\x85\xa4\xf3\xa0\x81\xa1\xef\xb8\x8f.jpg",
                "red.jpg"},
            Row{"blanks of every kind at the ends", "\xe2\x80\x83.\xc2\xa0red.jpg\xe3\x80\x80.\xe1\x9a\x80", "red.jpg"},
            Row{"runs of blanks", "red.jpg \xe2\x80\x8b\xe3\x80\x80    .exe", "red.jpg .exe"},
            Row{"a blank of its own kind", "red\xe3\x80\x80one.jpg", "red\xe3\x80\x80one.jpg"},
            Row{"controls, zero byte", std::string("r\r\ned\a.jpg\x7f\0\xc2\x85.exe", 18), "red.jpg.exe"},
            Row{"turned direction", "red\xe2\x80\xaegpj.exe\xe2\x81\xa6", "redgpj.exe"},
            Row{"UTF-8", "gr\xc3\xbcn \xe5\x87\xa7 \xf0\x9f\xaa\x81", "gr\xc3\xbcn \xe5\x87\xa7 \xf0\x9f\xaa\x81"},
            Row{"Windows-1252", "gr\xfcn \x80\x93.jpg", "gr\xc3\xbcn \xe2\x82\xac\xe2\x80\x9c.jpg"},
            Row{"not in Windows-1252", "r\x81z\x9d\xff.jpg", "rz\xc3\xbf.jpg"},
            Row{"overlong slash is no slash", "x\xc0\xafx", "x\xc3\x80\xc2\xafx"},
            Row{"half a surrogate", "\xed\xa0\x80", "\xc3\xad\xc2\xa0\xe2\x82\xac"},
            Row{"cut UTF-8", "red\xc3", "red\xc3\x83"},
            Row{"too long, no cut through a character", beyond + ".jpg", beyond.substr(0, 250) + ".jpg"},
            Row{"too long an extension", "x." + Times(300, "y"), "x." + Times(253, "y")},
        }) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(SafeFileName(row.name), row.safe);
    }
}

TEST(AttachmentName, OfADiskThatIsParticular)
{
    EXPECT_EQ(PortableFileName("10:30 <\"what?\"|*>.jpg"), "10_30 __what_____.jpg");
    EXPECT_EQ(PortableFileName(Times(100, "\xc3\xa4") + ".jpg"), Times(58, "\xc3\xa4") + ".jpg");
}

TEST(AttachmentName, TakesANumberBeforeTheExtension)
{
    EXPECT_EQ(NumberedFileName("README", 3), "README (3)");
    EXPECT_EQ(NumberedFileName(Times(251, "x") + ".jpg", 12), Times(246, "x") + " (12).jpg");
}

}
