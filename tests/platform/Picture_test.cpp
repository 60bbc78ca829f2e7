#include "platform/Bitmap.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Form.h"
#include "platform/ImageControl.h"

#include <QImage>
#include <QLabel>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <unistd.h>

namespace {

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
    huge.replace(18, 8, std::string("\x20\x4e\0\0\x20\x4e\0\0", 8)); // 20,000 pixels to a side
    for (const std::string& content : {huge, std::string(), std::string("no picture"),
             std::string("<svg width='9' height='9'/>"), std::string(100000, '\0'),
             FilesOfAllKinds().at(".png").substr(0, 40), FilesOfAllKinds().at(".wmf").substr(0, 60)})
        EXPECT_EQ(Read(content).Height(), 0) << content.substr(0, 20);
    // Their texts are drawn, though fonts can no longer be looked for.
    for (const char* sample : {"text.emf", "glyphs.emf", "text.wmf"}) {
        const QImage shown = Shown(ContentOf(std::string(PICTURE_SAMPLES) + sample));
        EXPECT_FALSE(shown == QImage(shown).scaled(1, 1).scaled(shown.size())) << sample;
    }
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
