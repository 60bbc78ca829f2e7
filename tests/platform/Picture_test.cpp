#include "platform/Bitmap.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Form.h"
#include "platform/ImageControl.h"

#include <QImage>
#include <QLabel>
#include <QtEndian>

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

// In the order of bytes of the formats: the least significant first.
template <class Integer> std::string Number(Integer value)
{
    value = qToLittleEndian(value);
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

// The functions of records, as they are in files.
constexpr std::uint16_t wmfFunctions[]
    = {0x001e, 0x0035, 0x0037, 0x00f7, 0x00f8, 0x0102, 0x0103, 0x0104, 0x0106, 0x0107, 0x0108, 0x012a, 0x012b, 0x012c,
        0x012d, 0x012e, 0x0127, 0x0139, 0x0142, 0x01f0, 0x01f9, 0x0201, 0x0209, 0x020a, 0x020b, 0x020c, 0x020d, 0x020e,
        0x020f, 0x0211, 0x0213, 0x0214, 0x0220, 0x0228, 0x0231, 0x0234, 0x02fa, 0x02fb, 0x02fc, 0x0324, 0x0325, 0x0410,
        0x0412, 0x0415, 0x0416, 0x0418, 0x0419, 0x041b, 0x041f, 0x0429, 0x0436, 0x0521, 0x0538, 0x0548, 0x061c, 0x061d,
        0x0626, 0x06ff, 0x0817, 0x081a, 0x0830, 0x0922, 0x0940, 0x0a32, 0x0b23, 0x0b41, 0x0d33, 0x0f43};

// The same picture, red to the left and blue to the right, in a file of each kind, by their endings; "-plain.wmf" is
// one without the placeable header.
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

    QImage Shown(const std::string& content)
    {
        image.SetPicture(Read(content));
        return Find<QLabel>("image").pixmap(Qt::ReturnByValue).toImage();
    }

    TemporaryFolder folder;
    const std::string path = folder.File("picture.txt");
    const std::string jpeg = FilesOfAllKinds().at(".jpeg");
    Form form{"form", "", {.clientWidth = 900, .clientHeight = 900}};
    ImageControl image{form, "image", {0, 0, 600, 600}};
};

}

TEST_F(PictureTest, TheContentTellsTheKind)
{
    for (const auto& [kind, content] : FilesOfAllKinds()) {
        SCOPED_TRACE(kind);
        const Bitmap picture = Read(content);
        if (kind == ".ico") {
            EXPECT_EQ(picture.Width(), 48);
        } else {
            EXPECT_NEAR(picture.Width() / static_cast<double>(picture.Height()), 2, 0.1);
            EXPECT_TRUE(kind == "-plain.wmf" || std::abs(picture.Width() - 40) <= 1) << picture.Width();
        }
        const QImage shown = Shown(content);
        for (const auto& [x, red] : {std::pair(1, 255), {3, 0}}) {
            const QColor seen = shown.pixelColor(shown.width() * x / 4, shown.height() * 9 / 10);
            EXPECT_LT(std::abs(seen.red() - red) + seen.green() + std::abs(seen.blue() - 255 + red), 36);
        }
    }
    std::string huge = FilesOfAllKinds().at(".bmp");
    huge.replace(18, 8, Number(20000) + Number(20000));
    for (const std::string& content : {huge, std::string(), std::string("no picture"),
             std::string("<svg width='9' height='9'/>"), std::string(100000, '\0'),
             FilesOfAllKinds().at(".png").substr(0, 40), FilesOfAllKinds().at(".wmf").substr(0, 60)})
        EXPECT_EQ(Read(content).Height(), 0) << content.substr(0, 20);
    EXPECT_EQ(Bitmap::FromFile(folder.File("missing")).Height() + Bitmap::FromFile(folder.Path()).Height(), 0);
}

TEST_F(PictureTest, IsTurnedAndTellsItsOwnSize)
{
    // Exif in an APP1 segment: a TIFF directory with one entry, orientation (0x0112) 6: to be turned to the right.
    const std::string exif = std::string("Exif\0\0II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 32);
    // The second one is reduced while it is read.
    for (const QSize& size : {QSize(40, 20), QSize(5000, 100)}) {
        QImage::fromData(QByteArray::fromStdString(jpeg)).scaled(size).save(QString::fromStdString(path), "JPEG");
        const std::string file = ContentOf(path);
        const std::string turned = file.substr(0, 2) + std::string("\xff\xe1\0\x22", 4) + exif + file.substr(2);
        EXPECT_EQ(QSize(Read(turned).Width(), Read(turned).Height()), size.transposed());
        const QImage shown = Shown(turned);
        EXPECT_GT(shown.pixelColor(shown.width() / 2, shown.height() / 5).red(), 200);
        EXPECT_GT(shown.pixelColor(shown.width() / 2, shown.height() * 4 / 5).blue(), 200);
    }
}

// Its helpers are looked at from outside, as the kernel tells of them.
class PictureHelperTest : public PictureTest {
protected:
    static std::vector<std::string> Helpers()
    {
        std::vector<std::string> helpers;
        const std::string own = "PPid:\t" + std::to_string(getpid()) + "\n";
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const std::string status = Told(entry.path().filename(), "status");
            if (status.starts_with("Name:\ttamarack-pictur\n") && status.find(own) != std::string::npos)
                helpers.push_back(entry.path().filename());
        }
        return helpers;
    }

    static std::string Told(const std::string& process, const char* what)
    {
        return ContentOf("/proc/" + process + "/" + what);
    }
};

TEST_F(PictureHelperTest, HasNoRights)
{
    for (const char* kind : {".jpeg", ".png", ".emf", ".gif", ".wmf"})
        ASSERT_NE(Read(FilesOfAllKinds().at(kind)).Height(), 0) << kind;
    const std::vector<std::string> helpers = Helpers();
    ASSERT_EQ(helpers.size(), 2) << "one of them for metafiles";
    for (const std::string& process : helpers) {
        const std::string told = Told(process, "status") + Told(process, "limits");
        for (const char* limit : {"NoNewPrivs:\t1\n", "Seccomp:\t2\n", "Max core file size +0 +0 ",
                 "Max file size +0 +0 ", "Max address space +1073741824 +1073741824 "})
            EXPECT_THAT(told, testing::ContainsRegex(limit));
        // What follows nobody but root may look at, since the helper hides it even from its own user.
        if (geteuid() != 0)
            continue;
        EXPECT_EQ(Told(process, "environ"), "");
        const bool readsFonts = Told(process, "cmdline").ends_with(std::string("\0fonts\0", 7));
        for (const auto& entry : std::filesystem::directory_iterator("/proc/" + process + "/fd")) {
            std::error_code gone;
            const std::string target = std::filesystem::read_symlink(entry.path(), gone);
            EXPECT_TRUE(target.starts_with("socket:") || target.starts_with("/memfd:") || target == "/dev/null"
                || target == "anon_inode:[eventfd]" // the toolkit's own
                || (readsFonts && target.ends_with(".ttf")))
                << target;
        }
    }
}

TEST_F(PictureHelperTest, IsKeptAndStartedAnew)
{
    ASSERT_NE(Read(jpeg).Height(), 0);
    const std::string first = Helpers().at(0);
    ASSERT_NE(Read(jpeg).Height(), 0);
    EXPECT_EQ(Helpers().at(0), first);
    kill(std::stoi(first), SIGKILL);
    ASSERT_TRUE(Until([&] { return Told(first, "status").find("State:\tZ") != std::string::npos; }));
    EXPECT_NE(Read(jpeg).Height(), 0);
    EXPECT_NE(Helpers().at(0), first);
}

// The texts of a metafile are drawn, though fonts can no longer be looked for; no file is opened that it names.
TEST_F(PictureHelperTest, AMetafileOpensNoFile)
{
    // A short path, since the name of a font has 31 characters at most.
    std::string named = "/tmp/tXXXXXX";
    close(mkstemp(named.data()));
    MakeFile(named, FilesOfAllKinds().at(".png"));
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, named.c_str(), IN_OPEN), 0);
    const std::string element = "<image x='0' y='0' width='9' height='9' xlink:href='" + named + "'/>";
    for (const char* sample : {"text.emf", "glyphs.emf", "text.wmf"}) {
        const QImage blank = Shown(Written(sample, "Arial", " "));
        EXPECT_NE(Shown(Written(sample, "Arial", "text")), blank) << sample;
        for (const std::string& font : {"A:file=" + named, std::string("A")}) {
            for (const std::string& text :
                {std::string("text"), "]]></text>" + element + "<text><![CDATA[", "</text>" + element + "<text>"})
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
}

TEST_F(PictureHelperTest, RandomMetafiles)
{
    const char* const wanted = std::getenv("TAMARACK_METAFILES");
    const int count = wanted == nullptr ? 400 : std::atoi(wanted);
    const std::string& emf = FilesOfAllKinds().at(".emf");
    const std::string& wmf = FilesOfAllKinds().at(".wmf");
    std::mt19937 generator(2);
    const auto random = [&generator] { return static_cast<std::uint32_t>(generator()); };
    for (int number = 0; number < count; ++number) {
        const bool isEmf = number % 2 == 0;
        std::string file = isEmf ? emf.substr(0, 88) : wmf.substr(0, 40);
        for (unsigned records = 1 + random() % 40; records > 0; --records) {
            // Numbers of any size, but mostly such as could stand there.
            std::string content;
            for (unsigned left = random() % 60; left > 0; --left)
                content += Number(random() % 4 == 0 ? random() : random() % 64);
            const auto length = static_cast<std::uint32_t>(content.size());
            file += isEmf ? Number(1 + random() % 122) + Number(8 + length)
                          : Number(3 + length / 2) + Number(wmfFunctions[random() % std::size(wmfFunctions)]);
            file += content;
        }
        file += isEmf ? emf.substr(emf.size() - 20) : std::string("\3\0\0\0\0\0", 6);
        // The header tells the length, of a WMF in words.
        const auto size = static_cast<std::uint32_t>(file.size());
        file.replace(isEmf ? 48 : 28, 4, Number(isEmf ? size : (size - 22) / 2));
        (void)Read(file);
    }
    EXPECT_NE(Read(emf).Height(), 0);
    EXPECT_NE(Read(wmf).Height(), 0);
}
