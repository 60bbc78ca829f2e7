#include "decoder/AttachmentStore.h"
#include "demo/sample/Encoders.h"
#include "tests/decoder/DecoderTest.h"

#include <csignal>
#include <filesystem>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace {

namespace fs = std::filesystem;

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
    EXPECT_EQ(Store(bodyName, "one"), "article7 (2).uue");
}

// As on many shares: no renaming that spares what is there, and no second name for a file. For good, in this process.
void ForbidLinks()
{
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_linkat, 2, 0),
#ifdef SYS_link
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_link, 1, 0),
#endif
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
    };
    const sock_fprog filter{std::size(steps), steps};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        std::_Exit(2);
}

TEST_F(StoredFilesTest, DisksThatKnowNoLinks)
{
    const auto storeTwo = [this] {
        ForbidLinks();
        Store("red.jpg", "one");
        Store("red.jpg", "two");
        std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(storeTwo(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Content("red.jpg"), "one");
    EXPECT_EQ(Content("red (2).jpg"), "two");
    EXPECT_EQ(Files().size(), 2U);
}

TEST_F(StoredFilesTest, WhatIsInHandIsHeld)
{
    const std::vector<std::string> noNames;
    AttachmentSets sets;
    AttachmentStore store(folder.File(bodyName), noNames, sets);
    for (const char* const content : {"one", "two"}) {
        store.Open("red.jpg");
        store.Write(content);
        RemoveRemains(folder.Path());
        EXPECT_TRUE(store.Keep());
    }
    EXPECT_EQ(Content("red (2).jpg"), "two");
    EXPECT_EQ(Files().size(), 2U);
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
    rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const std::string path = folder.File(bodyName);
    ASSERT_TRUE(MakeFile(path, large + "=ybegin size=9 name=wrong.bin\r\nabc"));
    const rlimit small{100'000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    decoder.SetDecodeFilename(path);
    EXPECT_EQ(decoder.DecodeStatus(), -3); // worse than the part that the body holds too
    EXPECT_TRUE(Files().empty());

    EXPECT_EQ(Decode(Uuencode("small", "small.bin")), 1);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
}

TEST_F(StoredFilesTest, WhatCannotBeReadHoldsNoAttachment)
{
    for (const std::string& path : {std::string("/nonexistent/article1.uue"), folder.Path()}) {
        EXPECT_EQ(Store("red.jpg", "one"), "red.jpg");
        decoder.SetDecodeFilename(path);
        EXPECT_EQ(decoder.DecodeStatus(), 0);
        EXPECT_EQ(decoder.ImageFilename(), "");
    }
}

}
