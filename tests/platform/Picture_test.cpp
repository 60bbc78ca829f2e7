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

#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/inotify.h>
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

// Red to the left, blue to the right.
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

// The functions of records, as they are in files.
constexpr std::uint32_t wmfFunctions[]
    = {0x001e, 0x0035, 0x0037, 0x00f7, 0x00f8, 0x0102, 0x0103, 0x0104, 0x0106, 0x0107, 0x0108, 0x012a, 0x012b, 0x012c,
        0x012d, 0x012e, 0x0127, 0x0139, 0x0142, 0x01f0, 0x01f9, 0x0201, 0x0209, 0x020a, 0x020b, 0x020c, 0x020d, 0x020e,
        0x020f, 0x0211, 0x0213, 0x0214, 0x0220, 0x0228, 0x0231, 0x0234, 0x02fa, 0x02fb, 0x02fc, 0x0324, 0x0325, 0x0410,
        0x0412, 0x0415, 0x0416, 0x0418, 0x0419, 0x041b, 0x041f, 0x0429, 0x0436, 0x0521, 0x0538, 0x0548, 0x061c, 0x061d,
        0x0626, 0x06ff, 0x0817, 0x081a, 0x0830, 0x0922, 0x0940, 0x0a32, 0x0b23, 0x0b41, 0x0d33, 0x0f43};

// The same picture in a file of each kind, by their endings; "-plain.wmf" is one without the placeable header.
const std::map<std::string, std::string>& FilesOfAllKinds()
{
    static const std::map<std::string, std::string> files = [] {
        std::map<std::string, std::string> found;
        const std::string folder = PICTURE_SAMPLES "kinds/";
        for (const std::string& name : FilesBelow(folder))
            found[name.substr(std::string("red-blue").size())] = ContentOf(folder + name);
        EXPECT_EQ(found.size(), 10U);
        return found;
    }();
    return files;
}

// Metafiles with these records and the headers of the samples, which tell the length, of a WMF in words.
std::string Wmf(bool placeable, const std::string& records)
{
    const std::size_t header = placeable ? 22 : 0;
    std::string file = FilesOfAllKinds().at(placeable ? ".wmf" : "-plain.wmf").substr(0, header + 18) + records
        + Number<4>(3) + Number<2>(0);
    return file.replace(header + 6, 4, Number<4>(static_cast<std::uint32_t>(file.size() - header) / 2));
}

std::string Emf(const std::string& records)
{
    const std::string& sample = FilesOfAllKinds().at(".emf");
    std::string file = sample.substr(0, 88) + records + sample.substr(sample.size() - 20);
    return file.replace(48, 4, Number<4>(static_cast<std::uint32_t>(file.size())));
}

// A sample with another font, of 31 characters at most, and another text, of 100.
std::string Written(const std::string& sample, const std::string& font, const std::string& text)
{
    std::string file = ContentOf(PICTURE_SAMPLES + sample);
    const auto coded = [&](const std::string& characters) {
        std::string bytes;
        for (const char character : characters)
            bytes += character + std::string(sample.ends_with(".emf") ? 1 : 0, '\0');
        return bytes;
    };
    for (auto [letters, put] : {std::pair(std::string(31, 'F'), font), {std::string(100, 'T'), text}}) {
        put.resize(letters.size(), letters[0] == 'T' ? ' ' : '\0');
        for (std::size_t at = 0; (at = file.find(coded(letters), at)) != std::string::npos;)
            file.replace(at, coded(put).size(), coded(put));
    }
    return file;
}

class PictureTest : public testing::Test {
protected:
    Bitmap Read(const std::string& content)
    {
        MakeFile(path, content);
        return Bitmap::FromFile(path);
    }

    // At a place between 0 and 1 in both directions.
    QColor ColourAt(const Bitmap& picture, double x, double y)
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
        const Bitmap picture = Read(content);
        const bool natural = kind == "-plain.wmf"; // its size in pixels is for the reader to say
        if (kind == ".ico") {
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
            std::string(100000, '\0'), Encoded("PNG").substr(0, 40), FilesOfAllKinds().at(".wmf").substr(0, 60)})
        EXPECT_EQ(Read(content).Height(), 0) << content.substr(0, 20);
    EXPECT_EQ(Bitmap::FromFile(folder.File("missing")).Height(), 0);
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

    const std::string jpeg = FilesOfAllKinds().at(".jpeg");
};

TEST_F(PictureHelperTest, HasNoRights)
{
    for (const char* kind : {".jpeg", ".png", ".emf", ".gif", ".wmf"})
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
    ASSERT_TRUE(Until([&] { return Told(first, "status").find("State:\tZ") != std::string::npos; }));
    EXPECT_NE(Read(jpeg).Height(), 0);
    EXPECT_NE(Helpers().at(0).process, first);
}

TEST_F(PictureHelperTest, ANewerPictureStaysOverASlowOne)
{
    const std::string slow = folder.File("slow.jpg");
    MakeFile(slow, SlowJpeg(15));
    MakeFile(path, jpeg);
    bool another = false;
    QTimer::singleShot(60, [&] { another = image.Load(path); });
    EXPECT_FALSE(image.Load(slow));
    EXPECT_TRUE(another);
    EXPECT_EQ(image.Picture().Width(), 40);
}

// Behind the filter, what texts need has to be there already.
TEST_F(PictureHelperTest, TextsOfMetafilesAreDrawn)
{
    const auto isDrawn = [this](const std::string& content) {
        image.SetPicture(Read(content));
        const QImage shown = Find<QLabel>("image").pixmap(Qt::ReturnByValue).toImage();
        int dark = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                dark += shown.pixelColor(x, y).lightness() < 100 ? 1 : 0;
        return dark > 20;
    };
    EXPECT_FALSE(isDrawn(Written("text.emf", "Arial", " ")));
    for (int times = 0; times < 3; ++times) {
        for (const char* sample : {"text.emf", "glyphs.emf", "text.wmf"})
            EXPECT_TRUE(isDrawn(Written(sample, "Arial", "text"))) << sample;
    }
}

// What a metafile names is nothing that is opened.
TEST_F(PictureHelperTest, AMetafileOpensNoFile)
{
    // A short path, since the name of a font has 31 characters at most.
    std::string named = "/tmp/tXXXXXX";
    close(mkstemp(named.data()));
    MakeFile(named, Encoded("PNG"));
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, named.c_str(), IN_OPEN), 0);
    const std::string element = "<image x='0' y='0' width='9' height='9' xlink:href='" + named + "'/>";
    for (const std::string& font : {"A:file=" + named, std::string("A")}) {
        for (const std::string& text :
            {std::string("text"), "]]></text>" + element + "<text><![CDATA[", "</text>" + element + "<text>"}) {
            for (const char* sample : {"text.emf", "glyphs.emf", "text.wmf"})
                (void)Read(Written(sample, font, text));
        }
    }
    char event[sizeof(inotify_event) + NAME_MAX + 1];
    EXPECT_LT(read(watch, event, sizeof event), 0);
    close(watch);
    std::filesystem::remove(named);
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

TEST_F(PictureHelperTest, RandomMetafiles)
{
    const char* const wanted = std::getenv("TAMARACK_METAFILES");
    const int count = wanted == nullptr ? 400 : std::atoi(wanted);
    std::mt19937 generator(2);
    const auto random = [&generator] { return static_cast<std::uint32_t>(generator()); };
    const auto numbers = [&random](std::size_t most) {
        std::string bytes;
        // Of any size, but mostly such as could stand there.
        for (std::size_t left = random() % most; left > 0; --left)
            bytes += Number<4>(random() % 4 == 0 ? random() : random() % 64);
        return bytes;
    };
    for (int number = 0; number < count; ++number) {
        std::string records;
        for (unsigned left = 1 + random() % 40; left > 0; --left) {
            const std::string content = numbers(60);
            const auto length = static_cast<std::uint32_t>(content.size());
            records += number % 2 == 0
                ? Number<4>(1 + random() % 122) + Number<4>(8 + length) + content
                : Number<4>(3 + length / 2) + Number<2>(wmfFunctions[random() % std::size(wmfFunctions)]) + content;
        }
        (void)Read(number % 2 == 0 ? Emf(records) : Wmf(number % 4 == 1, records));
    }
    EXPECT_NE(Read(FilesOfAllKinds().at(".emf")).Height(), 0);
    EXPECT_NE(Read(FilesOfAllKinds().at(".wmf")).Height(), 0);
}
