#include "base/UnnamedFile.h"
#include "tests/decoder/DecoderTest.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int lacking = 0; // of what gives a file its name: 1 a renaming that spares what is there, 2 second names too

int Refused() { return errno = EINVAL, -1; }

}

// As many shares have it.
extern "C" {
int renameat2(int, const char* from, int, const char* to, unsigned flags) noexcept
{
    return lacking > 0 ? Refused() : static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, flags));
}

int link(const char* from, const char* to) noexcept
{
    return lacking > 1 ? Refused() : static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}
}

namespace {

class StoredFilesTest : public DecoderTest {
protected:
    // Decodes an attachment of that name, and gives the name that it got.
    std::string Store(std::string_view name, std::string_view content)
    {
        EXPECT_EQ(Decode(Uuencode(content, name)), 1);
        EXPECT_EQ(Content(decoder.ImageFilename()), content);
        return decoder.ImageFilename();
    }
};

TEST_F(StoredFilesTest, NothingExistingIsTouched)
{
    EXPECT_EQ(Store("red.jpg", "one"), "red.jpg");
    EXPECT_EQ(Store("red.jpg", "one"), "red.jpg");
    EXPECT_EQ(Store("red.jpg", "two"), "red (2).jpg");
    EXPECT_EQ(Store("red.jpg", "eno"), "red (3).jpg"); // as long as the first
    EXPECT_EQ(Store("red.jpg", "two"), "red (2).jpg");
    EXPECT_EQ(Content("red.jpg"), "one");
    EXPECT_EQ(Files().size(), 3U);

    for (int number = 4; number <= 250; ++number)
        MakeFile(folder.File("red (" + std::to_string(number) + ").jpg"), "");
    EXPECT_EQ(Store("red.jpg", "many"), "red (251).jpg");
    EXPECT_EQ(Store("red.jpg", "more"), "red (252).jpg");
    EXPECT_EQ(Store("article7.uue", "one"), "article7 (2).uue");
}

TEST_F(StoredFilesTest, DisksThatKnowNoLinks)
{
    for (lacking = 1; lacking < 3; ++lacking) {
        const std::string name = std::to_string(lacking);
        EXPECT_EQ(Store(name, "one"), name);
        EXPECT_EQ(Store(name, "two"), name + " (2)");
        EXPECT_EQ(Content(name), "one");
    }
    lacking = 0;
    EXPECT_EQ(Files().size(), 4U);
}

TEST_F(StoredFilesTest, WhatIsInHandIsHeld)
{
    UnnamedFile file(folder.Path());
    RemoveRemains(folder.Path());
    EXPECT_FALSE(file.Write("one") || file.Finish() || file.TakeName(folder.File("red.jpg")));
    EXPECT_EQ(Content("red.jpg"), "one");
    EXPECT_EQ(Files().size(), 1U);
}

TEST_F(StoredFilesTest, LinksDirectoriesAndPipesAreTakenNames)
{
    const TemporaryFolder elsewhere;
    ASSERT_TRUE(MakeFile(elsewhere.File("target"), "one"));
    fs::create_symlink(elsewhere.File("target"), folder.File("link.jpg")); // to the same content
    fs::create_symlink(elsewhere.File("missing"), folder.File("dangling.jpg"));
    fs::create_directory(folder.File("folder.jpg"));
    ASSERT_EQ(mkfifo(folder.File("pipe.jpg").c_str(), 0600), 0);
    for (const std::string name : {"link", "dangling", "folder", "pipe"})
        EXPECT_EQ(Store(name + ".jpg", name == "pipe" ? "" : "one"), name + " (2).jpg");
    EXPECT_EQ(FilesBelow(elsewhere.Path()), std::vector<std::string>{"target"});
    EXPECT_TRUE(fs::is_symlink(folder.File("link.jpg")));
}

TEST_F(StoredFilesTest, AttachmentThatCannotBeWrittenLeavesNothing)
{
    const std::string large = Uuencode(RandomBytes(200'000), "large.bin");
    const std::string cut = "=ybegin size=9 name=wrong.bin\r\nabc";
    EXPECT_EQ(Decode(large + cut, RLIMIT_FSIZE, 100'000), -3); // worse than the part that the body holds too
    EXPECT_TRUE(Files().empty());
    EXPECT_EQ(Decode(large + Uuencode("small", "small.bin"), RLIMIT_FSIZE, 100'000), 1);
}

}
