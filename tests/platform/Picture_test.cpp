#include "platform/Bitmap.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Form.h"
#include "platform/ImageControl.h"
#include "tests/support/HostilePictures.h"
#include "tests/support/ResidentMemory.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QTimer>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <unistd.h>

namespace {

// A number in the order of bytes of the formats: the least significant first.
template <int bytes> std::string Number(std::uint32_t value)
{
    std::string text;
    for (int index = 0; index < bytes; ++index)
        text += static_cast<char>(value >> (8 * index) & 0xff);
    return text;
}

std::string Words(std::initializer_list<int> words)
{
    std::string text;
    for (const int word : words)
        text += Number<2>(static_cast<std::uint32_t>(word));
    return text;
}

std::string Encoded(const char* format, int width = 40, int height = 20)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter(&image).fillRect(width / 2, 0, width / 2, height, Qt::blue);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, format)) << format;
    return bytes.toStdString();
}

// Each two colours have a clear code before them, so that all codes stay 3 bits wide: nine bytes for sixteen pixels.
std::string Gif()
{
    std::string file = "GIF89a" + Words({32, 16}) + std::string("\x80\0\0\xff\0\0\0\0\xff", 9) + ','
        + Words({0, 0, 32, 16}) + std::string("\0\2", 2);
    for (int row = 0; row < 16; ++row)
        file
            += '\x12' + std::string("\x04\x08\x10\x20\x40\x80\x00\x01\x02", 9) + "\x4c\x98\x30\x61\xc2\x84\x09\x13\x26";
    return file + std::string("\1\5\0;", 4);
}

std::string WmfRecord(int function, std::initializer_list<int> words)
{
    return Number<4>(static_cast<std::uint32_t>(3 + words.size())) + Words({function}) + Words(words);
}

// A font and a text. Lengths count in words.
std::string WmfText(const std::string& font, std::string text)
{
    std::string name = font + '\0';
    name.resize(std::max<std::size_t>(name.size() + name.size() % 2, 32));
    text.resize(text.size() + text.size() % 2);
    const auto half = [](std::size_t bytes) { return static_cast<std::uint32_t>(bytes / 2); };
    return WmfRecord(0x020b, {0, 0}) + WmfRecord(0x020c, {20, 40}) + Number<4>(12 + half(name.size()))
        + Words({0x02fb, -12, 0, 0, 0, 400, 0, 0, 0, 0}) + name + WmfRecord(0x012d, {0})
        + Number<4>(6 + half(text.size())) + Words({0x0521, static_cast<int>(text.size())}) + text + Words({10, 1});
}

// Two rectangles without a pen, and a text with a character that SVG has another use for; or other records.
std::string Wmf(bool placeable, std::string records = {})
{
    if (records.empty()) {
        records = WmfRecord(0x020b, {0, 0}) + WmfRecord(0x020c, {20, 40}) + WmfRecord(0x02fa, {5, 0, 0, 0, 0})
            + WmfRecord(0x012d, {0});
        for (const auto& [handle, low, high, left] : {std::tuple(1, 0x00ff, 0, 0), {2, 0, 0x00ff, 20}})
            records += WmfRecord(0x02fc, {0, low, high, 0}) + WmfRecord(0x012d, {handle})
                + WmfRecord(0x041b, {20, left + 20, 0, left});
        records += WmfRecord(0x0521, {2, '&' + ('<' << 8), 1, 1});
    }
    records += WmfRecord(0, {});
    const std::string header = Words({1, 9, 0x300}) + Number<4>(static_cast<std::uint32_t>(9 + records.size() / 2))
        + Words({3}) + Number<4>(4096) + Words({0});
    std::string placing;
    if (placeable) {
        placing = "\xd7\xcd\xc6\x9a" + Words({0, 0, 0, 40, 20, 96, 0, 0});
        int sum = 0;
        for (std::size_t at = 0; at < 20; at += 2)
            sum ^= static_cast<unsigned char>(placing[at]) | static_cast<unsigned char>(placing[at + 1]) << 8;
        placing += Words({sum});
    }
    return placing + header + records;
}

std::string EmfRecord(std::uint32_t type, std::initializer_list<std::uint32_t> numbers)
{
    std::string record = Number<4>(type) + Number<4>(static_cast<std::uint32_t>(8 + 4 * numbers.size()));
    for (const std::uint32_t number : numbers)
        record += Number<4>(number);
    return record;
}

// A font, and a text as characters or as numbers of the font's glyphs.
std::string EmfText(const std::string& font, const std::string& text, bool glyphs)
{
    const auto wide = [](std::string_view narrow, std::size_t length) {
        std::string characters;
        for (const char character : narrow)
            characters += Number<2>(static_cast<unsigned char>(character));
        characters.resize(length);
        return characters;
    };
    const std::string logicalFont = Number<4>(static_cast<std::uint32_t>(-12)) + std::string(12, '\0') + Number<4>(400)
        + std::string(8, '\0') + wide(font, 64) + wide(font, 128) + wide("", 100);
    const std::string characters = wide(text, (text.size() * 2 + 3) / 4 * 4);
    const auto count = static_cast<std::uint32_t>(text.size());
    const auto end = static_cast<std::uint32_t>(76 + characters.size());
    return Number<4>(82) + Number<4>(static_cast<std::uint32_t>(12 + logicalFont.size())) + Number<4>(3) + logicalFont
        + EmfRecord(37, {3}) + Number<4>(84) + Number<4>(end + 4 * count)
        + EmfRecord(0, {0, 0, 40, 20, 2, 0, 0, 2, 2, count, 76, glyphs ? 0x10U : 0U, 0, 0, 40, 20, end}).substr(8)
        + characters + std::string(4 * count, '\1');
}

// Two rectangles; or other records.
std::string Emf(std::string records = {})
{
    if (records.empty()) {
        records = EmfRecord(17, {8}) + EmfRecord(9, {40, 20}) + EmfRecord(11, {40, 20}) + EmfRecord(38, {3, 5, 0, 0, 0})
            + EmfRecord(37, {3});
        for (const auto& [handle, colour, left] : {std::tuple(1U, 0x0000ffU, 0U), {2U, 0xff0000U, 20U}})
            records += EmfRecord(39, {handle, 0, colour, 0}) + EmfRecord(37, {handle})
                + EmfRecord(43, {left, 0, left + 20, 20});
    }
    records += EmfRecord(14, {0, 0, 20});
    // 1058 hundredths of a millimetre are 40 pixels.
    return Number<4>(1) + Number<4>(88) + Number<4>(0) + Number<4>(0) + Number<4>(40) + Number<4>(20) + Number<4>(0)
        + Number<4>(0) + Number<4>(1059) + Number<4>(530) + " EMF" + Number<4>(0x10000)
        + Number<4>(static_cast<std::uint32_t>(88 + records.size())) + Number<4>(10) + Words({4, 0}) + Number<4>(0)
        + Number<4>(0) + Number<4>(0) + Number<4>(1024) + Number<4>(768) + Number<4>(271) + Number<4>(203) + records;
}

std::string Icon(std::initializer_list<int> sides)
{
    std::string directory = Words({0, 1, static_cast<int>(sides.size())});
    std::string pictures;
    for (const int side : sides) {
        const std::string png = Encoded("PNG", side, side);
        directory += Number<1>(static_cast<std::uint32_t>(side)) + Number<1>(static_cast<std::uint32_t>(side))
            + Words({0, 1, 32}) + Number<4>(static_cast<std::uint32_t>(png.size()))
            + Number<4>(static_cast<std::uint32_t>(6 + 16 * sides.size() + pictures.size()));
        pictures += png;
    }
    return directory + pictures;
}

const std::map<std::string, std::string>& FilesOfAllKinds()
{
    static const std::map<std::string, std::string> files{{"jpeg", Encoded("JPEG")}, {"png", Encoded("PNG")},
        {"bmp", Encoded("BMP")}, {"webp", Encoded("WEBP")}, {"tiff", Encoded("TIFF")}, {"gif", Gif()},
        {"ico", Icon({16, 48, 32})}, {"wmf", Wmf(true)}, {"plain wmf", Wmf(false)}, {"emf", Emf()}};
    return files;
}

class PictureTest : public testing::Test {
protected:
    Bitmap Read(const std::string& content)
    {
        MakeFile(path, content);
        return Bitmap::FromFile(path);
    }

    QImage Shown(const Bitmap& picture)
    {
        image.SetPicture(picture);
        return Find<QLabel>("image").pixmap(Qt::ReturnByValue).toImage();
    }

    // At a place between 0 and 1 in both directions.
    QColor ColourAt(const Bitmap& picture, double x, double y)
    {
        const QImage shown = Shown(picture);
        return shown.pixelColor(static_cast<int>(x * shown.width()), static_cast<int>(y * shown.height()));
    }

    TemporaryFolder folder;
    const std::string path = folder.File("picture.txt");
    Form form{"form", "", {.clientWidth = 900, .clientHeight = 900}};
    ImageControl image{form, "image", {0, 0, 600, 600}};
};

}

TEST_F(PictureTest, TheContentTellsTheKind)
{
    for (const auto& [kind, content] : FilesOfAllKinds()) {
        SCOPED_TRACE(kind);
        const Bitmap picture = Read(content);
        const int width = kind == "ico" ? 48 : kind == "gif" ? 32 : 40;
        // The size in pixels of a plain WMF is for the reader to say.
        EXPECT_NEAR(picture.Width(), kind == "plain wmf" ? picture.Width() : width, 1);
        EXPECT_NEAR(picture.Width() / static_cast<double>(picture.Height()), kind == "ico" ? 1 : 2, 0.1);
        for (const auto& [x, colour] : {std::pair(0.25, Qt::red), {0.75, Qt::blue}}) {
            const QColor seen = ColourAt(picture, x, 0.9);
            EXPECT_NEAR(seen.red(), QColor(colour).red(), 12);
            EXPECT_NEAR(seen.green(), 0, 12);
            EXPECT_NEAR(seen.blue(), QColor(colour).blue(), 12);
        }
    }
    for (const std::string& content :
        {std::string(), std::string("no picture"), std::string("<svg width='9' height='9'/>"),
            std::string(100000, '\0'), Encoded("PNG").substr(0, 40), Wmf(true).substr(0, 60)})
        EXPECT_EQ(Read(content).Height(), 0) << content.substr(0, 20);
    EXPECT_EQ(Bitmap::FromFile(folder.Path()).Height(), 0);
    const std::string notUtf8 = folder.File("caf\xe9.jpg");
    MakeFile(notUtf8, Encoded("PNG"));
    EXPECT_NE(Bitmap::FromFile(notUtf8).Height(), 0);
}

TEST_F(PictureTest, OrientationAndSize)
{
    // Exif in an APP1 segment: a TIFF directory with one entry, orientation (0x0112) 6: to be turned to the right.
    const std::string exif = std::string("Exif\0\0II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 32);
    const auto turned = [&](const std::string& jpeg) {
        return jpeg.substr(0, 2) + std::string("\xff\xe1\0\x22", 4) + exif + jpeg.substr(2);
    };
    const Bitmap small = Read(turned(Encoded("JPEG", 40, 20)));
    EXPECT_EQ(small.Width(), 20);
    EXPECT_EQ(small.Height(), 40);
    EXPECT_GT(ColourAt(small, 0.5, 0.2).red(), 200);
    EXPECT_GT(ColourAt(small, 0.5, 0.8).blue(), 200);
    // One that is reduced while it is read still tells its own size.
    const Bitmap large = Read(turned(Encoded("JPEG", 5000, 100)));
    EXPECT_EQ(large.Width(), 100);
    EXPECT_EQ(large.Height(), 5000);
    EXPECT_GT(ColourAt(large, 0.5, 0.2).red(), 200);

    std::string huge = Encoded("BMP");
    EXPECT_EQ(Read(huge.replace(18, 8, Number<4>(20000) + Number<4>(20000))).Height(), 0);
}

// Its helpers are looked at from outside, as the kernel tells of them.
class PictureHelperTest : public PictureTest {
protected:
    struct Helper {
        std::string process;
        bool forMetafiles;
    };

    static std::vector<Helper> Helpers()
    {
        std::vector<Helper> helpers;
        const std::string own = "PPid:\t" + std::to_string(getpid()) + "\n";
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const std::string process = entry.path().filename();
            const std::string status = Told(process, "status");
            if (status.starts_with("Name:\ttamarack-pictur\n") && status.find(own) != std::string::npos)
                helpers.push_back({process, Told(process, "cmdline").ends_with(std::string("\0fonts\0", 7))});
        }
        return helpers;
    }

    static std::string Told(const std::string& process, const char* what)
    {
        return ContentOf("/proc/" + process + "/" + what);
    }

    static long PeakKilobytes(const std::string& process)
    {
        const std::string status = Told(process, "status");
        return std::stol(status.substr(status.find("VmHWM:") + 6));
    }

    const std::string jpeg = FilesOfAllKinds().at("jpeg");
};

TEST_F(PictureHelperTest, HasNoRights)
{
    for (const char* kind : {"jpeg", "png", "emf", "gif", "wmf"})
        ASSERT_NE(Read(FilesOfAllKinds().at(kind)).Height(), 0) << kind;
    const std::vector<Helper> helpers = Helpers();
    ASSERT_EQ(helpers.size(), 2);
    EXPECT_NE(helpers[0].forMetafiles, helpers[1].forMetafiles);
    for (const auto& [process, forMetafiles] : helpers) {
        const std::string status = Told(process, "status");
        EXPECT_THAT(status, testing::HasSubstr("NoNewPrivs:\t1\n"));
        EXPECT_THAT(status, testing::HasSubstr("Seccomp:\t2\n"));
        const std::string limits = Told(process, "limits");
        EXPECT_THAT(limits, testing::ContainsRegex("Max core file size +0 +0 "));
        EXPECT_THAT(limits, testing::ContainsRegex("Max file size +0 +0 "));
        EXPECT_THAT(limits, testing::ContainsRegex("Max address space +1073741824 +1073741824 "));
        // What follows nobody but root may look at, since the helper hides it even from its own user.
        if (geteuid() != 0)
            continue;
        EXPECT_EQ(Told(process, "environ"), "");
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/" + process + "/fd", error)) {
            const std::string target = std::filesystem::read_symlink(entry.path(), error);
            EXPECT_TRUE(target.starts_with("socket:") || target.starts_with("/memfd:") || target == "/dev/null"
                || target == "anon_inode:[eventfd]" // the toolkit's own
                || (forMetafiles && target.ends_with(".ttf")))
                << target;
        }
    }
}

TEST_F(PictureHelperTest, IsKeptAndStartedAnew)
{
    ASSERT_NE(Read(jpeg).Height(), 0);
    const std::string first = Helpers().at(0).process;
    ASSERT_NE(Read(jpeg).Height(), 0);
    EXPECT_EQ(Helpers().at(0).process, first);
    kill(std::stoi(first), SIGKILL);
    ASSERT_TRUE(Until([&] { return Told(first, "cmdline").empty(); }));
    EXPECT_NE(Read(jpeg).Height(), 0);
    EXPECT_NE(Helpers().at(0).process, first);
}

TEST_F(PictureHelperTest, ASlowPictureIsNoneAndTheWindowGoesOn)
{
    const std::string slow = folder.File("slow.jpg");
    MakeFile(slow, SlowJpeg());
    ASSERT_TRUE(image.Load((MakeFile(path, jpeg), path)));
    int events = 0;
    bool another = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        // While it waits, another picture is read, into the same place, where it stays.
        if (++events == 5)
            another = image.Load(path);
    });
    timer.start(20);
    EXPECT_FALSE(image.Load(slow));
    EXPECT_GT(events, 5);
    EXPECT_TRUE(another);
    EXPECT_EQ(image.Picture().Width(), 40);
    MakeFile(slow, SlowJpeg(15));
    EXPECT_FALSE(image.Load(slow));
    EXPECT_EQ(image.Picture().Width(), 40);
    EXPECT_TRUE(image.Load(path));
}

TEST_F(PictureHelperTest, TextsAreNotUnpacked)
{
    ASSERT_NE(Read(jpeg).Height(), 0);
    const long before = PeakKilobytes(Helpers().at(0).process);
    const Bitmap picture = Read(PngWithTexts());
    EXPECT_EQ(picture.Width(), 8);
    EXPECT_GT(ColourAt(picture, 0.5, 0.5).red(), 200);
    EXPECT_LT(PeakKilobytes(Helpers().at(0).process), before + 16 * 1024);
}

// Behind the filter, what texts need has to be there already.
TEST_F(PictureHelperTest, TextsOfMetafilesAreDrawn)
{
    const auto isDrawn = [this](const std::string& content) {
        const QImage shown = Shown(Read(content));
        int dark = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                dark += shown.pixelColor(x, y).lightness() < 100 ? 1 : 0;
        return dark > 20;
    };
    EXPECT_FALSE(isDrawn(Emf(EmfText("Arial", " ", false))));
    for (int times = 0; times < 3; ++times) {
        EXPECT_TRUE(isDrawn(Emf(EmfText("Arial", "text", false))));
        EXPECT_TRUE(isDrawn(Emf(EmfText("Arial", "text", true))));
        EXPECT_TRUE(isDrawn(Wmf(true, WmfText("Arial", "text"))));
    }
    const std::string named = "</text><image x='0' y='0' width='9' height='9' xlink:href='/etc/passwd'/><text>";
    EXPECT_EQ(Read(Emf(EmfText("Arial", "]]>" + named + "<![CDATA[", false))).Height(), 0) << "names a file";
}

TEST_F(PictureHelperTest, DamagedFiles)
{
    constexpr int filesOfEachKind = 2000;
    testing::internal::CaptureStderr();
    [[maybe_unused]] const long before = ResidentKilobytes();
    std::mt19937 random(1);
    for (const auto& [kind, whole] : FilesOfAllKinds()) {
        for (int number = 0; number < filesOfEachKind; ++number) {
            std::string damaged = whole;
            for (int flips = number % 2 == 0 ? 0 : 1 + number % 7; flips > 0; --flips)
                damaged[random() % damaged.size()] ^= static_cast<char>(1 << random() % 8);
            if (number % 2 == 0 || number % 5 == 0)
                damaged.resize(random() % damaged.size());
            (void)Read(damaged);
        }
        EXPECT_NE(Read(whole).Height(), 0) << "behind the damaged ones of " << kind;
    }
    // The readers complain at length, but not to the user's terminal.
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed for a while
    EXPECT_LT(ResidentKilobytes(), before + 300 * 1024);
#endif
}
