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
    const std::string beyond = Times(200, "\xc3\xa4"); // 400 bytes
    for (const auto& [name, safe] : std::vector<std::pair<std::string, std::string>>{
             {"\"C:\\My Pictures\\red.jpg\"", "red.jpg"}, {"a \"red\" one.jpg", "a \"red\" one.jpg"},
             {"a\\../b/..\\red.jpg", "red.jpg"}, {"pictures/", "attachment"}, {" . .. ", "attachment"},
             {"\"\"", "attachment"}, {" -rf.jpg", "_-rf.jpg"}, {"\x01.\xef\xbb\xbf.bashrc", "bashrc"},
             // What is shown as nothing, or turns the direction.
             {"red\xc2\xad\xe1\xa0\x8e\xe2\xa0\x80\xe3\x85\xa4\xf3\xa0\x81\xa1\xef\xb8\x8f.jpg", "red.jpg"},
             {"red\xe2\x80\xaegpj.exe\xe2\x81\xa6", "redgpj.exe"},
             {std::string("r\r\ned\a.jpg\x7f\0\xc2\x85.exe", 18), "red.jpg.exe"},
             // Blanks of every kind, at the ends, in runs and by themselves.
             {"\xe2\x80\x83.\xc2\xa0red.jpg\xe3\x80\x80.\xe1\x9a\x80", "red.jpg"},
             {"red.jpg \xe2\x80\x8b\xe3\x80\x80    .exe", "red.jpg .exe"},
             {"red\xe3\x80\x80one.jpg", "red\xe3\x80\x80one.jpg"},
             // UTF-8, Windows-1252, and what is neither.
             {"gr\xc3\xbcn \xe5\x87\xa7 \xf0\x9f\xaa\x81", "gr\xc3\xbcn \xe5\x87\xa7 \xf0\x9f\xaa\x81"},
             {"gr\xfcn \x80\x93.jpg", "gr\xc3\xbcn \xe2\x82\xac\xe2\x80\x9c.jpg"},
             {"r\x81z\x9d\xff.jpg", "rz\xc3\xbf.jpg"}, {"x\xc0\xafx", "x\xc3\x80\xc2\xafx"},
             {"\xed\xa0\x80", "\xc3\xad\xc2\xa0\xe2\x82\xac"}, {"red\xc3", "red\xc3\x83"},
             // Too long, and not cut through a character.
             {beyond + ".jpg", beyond.substr(0, 250) + ".jpg"}, {"x." + Times(300, "y"), "x." + Times(253, "y")}})
        EXPECT_EQ(SafeFileName(name), safe) << name;
}

TEST(AttachmentName, OfADiskThatIsParticularAndWithANumber)
{
    EXPECT_EQ(PortableFileName("10:30 <\"what?\"|*>.jpg"), "10_30 __what_____.jpg");
    EXPECT_EQ(PortableFileName(Times(100, "\xc3\xa4") + ".jpg"), Times(58, "\xc3\xa4") + ".jpg");
    EXPECT_EQ(NumberedFileName("README", 3), "README (3)");
    EXPECT_EQ(NumberedFileName(Times(251, "x") + ".jpg", 12), Times(246, "x") + " (12).jpg");
}

}
