#include "platform/Picture.h"

#include "platform/Form.h"
#include "platform/ImageControl.h"
#include "support/Screen.h"
#include "support/TemporaryFolder.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QPainter>

#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
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

// Red to the left, blue to the right. A clear code (4) before every two colours keeps all codes 3 bits wide.
std::string Gif(int width, int height)
{
    std::string file = "GIF89a" + Words({width, height}) + std::string("\x81\0\0", 3)
        + std::string("\xff\0\0\0\0\xff\0\0\0\0\0\0", 12) + "," + Words({0, 0, width, height}) + std::string("\0\2", 2);
    std::string codes;
    std::uint32_t bits = 0;
    int count = 0;
    const auto add = [&](std::uint32_t code) {
        bits |= code << count;
        for (count += 3; count >= 8; count -= 8, bits >>= 8)
            codes += static_cast<char>(bits & 0xff);
    };
    for (int pixel = 0; pixel < width * height; ++pixel) {
        if (pixel % 2 == 0)
            add(4);
        add(pixel % width < width / 2 ? 0 : 1);
    }
    add(5);
    codes += static_cast<char>(bits & 0xff);
    for (std::size_t at = 0; at < codes.size(); at += 255) {
        const std::string block = codes.substr(at, 255);
        file += static_cast<char>(block.size()) + block;
    }
    return file + std::string("\0;", 2);
}

std::string WmfRecord(int function, std::initializer_list<int> words)
{
    return Number<4>(static_cast<std::uint32_t>(3 + words.size())) + Words({function}) + Words(words);
}

// Two rectangles without a pen, and a text with a character that SVG has another use for.
std::string Wmf(bool placeable)
{
    std::string records = WmfRecord(0x020b, {0, 0}) + WmfRecord(0x020c, {20, 40}) + WmfRecord(0x02fa, {5, 0, 0, 0, 0})
        + WmfRecord(0x012d, {0});
    for (const auto& [handle, low, high, left] : {std::tuple(1, 0x00ff, 0, 0), {2, 0, 0x00ff, 20}})
        records += WmfRecord(0x02fc, {0, low, high, 0}) + WmfRecord(0x012d, {handle})
            + WmfRecord(0x041b, {20, left + 20, 0, left});
    records += WmfRecord(0x0521, {2, '&' + ('<' << 8), 1, 1}) + WmfRecord(0, {});
    const std::string header = Words({1, 9, 0x300}) + Number<4>(static_cast<std::uint32_t>(9 + records.size() / 2))
        + Words({3}) + Number<4>(7) + Words({0});
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

std::string Emf()
{
    std::string records = EmfRecord(17, {8}) + EmfRecord(9, {40, 20}) + EmfRecord(11, {40, 20})
        + EmfRecord(38, {3, 5, 0, 0, 0}) + EmfRecord(37, {3});
    for (const auto& [handle, colour, left] : {std::tuple(1U, 0x0000ffU, 0U), {2U, 0xff0000U, 20U}})
        records += EmfRecord(39, {handle, 0, colour, 0}) + EmfRecord(37, {handle})
            + EmfRecord(43, {left, 0, left + 20, 20});
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
        {"bmp", Encoded("BMP")}, {"webp", Encoded("WEBP")}, {"tiff", Encoded("TIFF")}, {"gif", Gif(40, 20)},
        {"ico", Icon({16, 48, 32})}, {"wmf", Wmf(true)}, {"plain wmf", Wmf(false)}, {"emf", Emf()}};
    return files;
}

class PictureTest : public testing::Test {
protected:
    Picture Read(const std::string& content)
    {
        MakeFile(path, content);
        return Picture::FromFile(path);
    }

    // At a place between 0 and 1 in both directions.
    QColor ColourAt(const Picture& picture, double x, double y)
    {
        image.SetPicture(picture);
        const QImage shown = Find<QLabel>("image").pixmap(Qt::ReturnByValue).toImage();
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
        const Picture picture = Read(content);
        const bool natural = kind == "plain wmf"; // its size in pixels is for the reader to say
        if (kind == "ico") {
            EXPECT_EQ(picture.Width(), 48);
        } else if (natural) {
            EXPECT_NEAR(picture.Width() / static_cast<double>(picture.Height()), 2, 0.1);
        } else {
            EXPECT_NEAR(picture.Width(), 40, 1);
            EXPECT_NEAR(picture.Height(), 20, 1);
        }
        for (const auto& [x, colour] : {std::pair(0.25, Qt::red), {0.75, Qt::blue}}) {
            const QColor wanted(colour);
            const QColor seen = ColourAt(picture, x, 0.9);
            EXPECT_NEAR(seen.red(), wanted.red(), 12);
            EXPECT_NEAR(seen.green(), wanted.green(), 12);
            EXPECT_NEAR(seen.blue(), wanted.blue(), 12);
        }
    }
    for (const std::string& content :
        {std::string(), std::string("no picture"), std::string("<svg width='9' height='9'/>"),
            std::string(100000, '\0'), Encoded("PNG").substr(0, 40), Wmf(true).substr(0, 60)})
        EXPECT_EQ(Read(content).Height(), 0) << content.substr(0, 20);
    EXPECT_EQ(Picture::FromFile(folder.File("missing")).Height(), 0);
    EXPECT_EQ(Picture::FromFile(folder.Path()).Height(), 0);
    const std::string notUtf8 = folder.File("caf\xe9.jpg");
    MakeFile(notUtf8, Encoded("PNG"));
    EXPECT_NE(Picture::FromFile(notUtf8).Height(), 0);
}

TEST_F(PictureTest, OrientationAndSize)
{
    // Exif in an APP1 segment: a TIFF directory with one entry, orientation (0x0112) 6: to be turned to the right.
    const std::string exif = std::string("Exif\0\0II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 32);
    const auto turned = [&](const std::string& jpeg) {
        return jpeg.substr(0, 2) + std::string("\xff\xe1\0\x22", 4) + exif + jpeg.substr(2);
    };
    const Picture small = Read(turned(Encoded("JPEG", 40, 20)));
    EXPECT_EQ(small.Width(), 20);
    EXPECT_EQ(small.Height(), 40);
    EXPECT_GT(ColourAt(small, 0.5, 0.2).red(), 200);
    EXPECT_GT(ColourAt(small, 0.5, 0.8).blue(), 200);
    // One that is reduced while it is read still tells its own size.
    const Picture large = Read(turned(Encoded("JPEG", 5000, 100)));
    EXPECT_EQ(large.Width(), 100);
    EXPECT_EQ(large.Height(), 5000);
    EXPECT_GT(ColourAt(large, 0.5, 0.2).red(), 200);

    std::string huge = Encoded("BMP");
    EXPECT_EQ(Read(huge.replace(18, 8, Number<4>(20000) + Number<4>(20000))).Height(), 0);
}

// Each kind is read in a process of its own, which must not die and must stay within its limits.
TEST_F(PictureTest, DamagedFiles)
{
    constexpr int filesOfEachKind = 2000;
    constexpr long mostKilobytes = 512 * 1024;
    constexpr double mostSeconds = 2;
    std::map<pid_t, std::string> running;
    const auto wait = [&] {
        int status = 0;
        const pid_t ended = ::wait(&status);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << running[ended] << ": status " << status;
        running.erase(ended);
    };
    for (const auto& [kind, whole] : FilesOfAllKinds()) {
        const pid_t child = fork();
        if (child != 0) {
            running[child] = kind;
            if (running.size() >= 2)
                wait();
            continue;
        }
        std::mt19937 random(1);
        (void)!freopen("/dev/null", "w", stderr); // the readers complain at length
        bool inTime = true;
        for (int number = 0; number < filesOfEachKind; ++number) {
            std::string damaged = whole;
            for (int flips = number % 2 == 0 ? 0 : 1 + number % 7; flips > 0; --flips)
                damaged[random() % damaged.size()] ^= static_cast<char>(1 << random() % 8);
            if (number % 2 == 0 || number % 5 == 0)
                damaged.resize(random() % damaged.size());
            MakeFile(path + kind, damaged);
            const std::clock_t start = std::clock();
            (void)Picture::FromFile(path + kind);
            inTime = inTime && static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC < mostSeconds;
        }
        rusage own{};
        rusage helpers{};
        getrusage(RUSAGE_SELF, &own);
        getrusage(RUSAGE_CHILDREN, &helpers);
        _exit(inTime && own.ru_maxrss < mostKilobytes && helpers.ru_maxrss < mostKilobytes ? 0 : 1);
    }
    while (!running.empty())
        wait();
}
