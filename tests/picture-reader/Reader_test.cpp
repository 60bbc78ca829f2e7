#include "picture-reader/Confinement.h"

#include "demo/support/TemporaryFolder.h"
#include "picture-reader/MetafilePainting.h"
#include "picture-reader/Protocol.h"

#include <QBuffer>
#include <QImage>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <map>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

#ifdef __SANITIZE_ADDRESS__ // whose threads need more of the kernel
const std::string threads;
#else
const std::string threads = "make a thread; ";
#endif

// What a reader that has been led astray might try. Each gives true if the kernel has let it.
std::map<std::string, std::function<bool()>> Attempts(const std::string& file)
{
    const auto opens = [](std::string path, int flags) { return [=] { return open(path.c_str(), flags, 0600) >= 0; }; };
    // With arguments that nothing can be done with, so that only the filter gives EPERM.
    const auto asks
        = [](long call) { return [=] { return syscall(call, -1, -1, -1, -1, -1) >= 0 || errno != EPERM; }; };
    return {{"open a file", opens(file, O_RDONLY)}, {"write to a file", opens(file, O_WRONLY)},
        {"change a file", opens(file, O_RDWR)}, {"cut a file off", opens(file, O_RDONLY | O_TRUNC)},
        {"make a file", opens(file + "2", O_RDONLY | O_CREAT)},
        {"make one without a name", opens("/tmp", O_TMPFILE | O_RDWR)},
        {"open its own memory", opens("/proc/self/mem", O_RDONLY)}, {"open a font", opens(font, O_RDONLY)},
        {"write to a font", opens(font, O_WRONLY)}, {"read a directory", opens("/", O_RDONLY | O_DIRECTORY)},
        {"delete a file", asks(SYS_unlinkat)}, {"rename a file", asks(SYS_renameat2)},
        {"make a directory", asks(SYS_mkdirat)}, {"give rights", asks(SYS_fchmod)}, {"make a socket", asks(SYS_socket)},
        {"make a pair of sockets", asks(SYS_socketpair)}, {"run a program", asks(SYS_execve)},
        {"end its parent", asks(SYS_kill)}, {"trace its parent", asks(SYS_ptrace)},
        {"have the kernel make its calls", asks(SYS_io_uring_setup)},
        {"make a process",
            [] {
                const pid_t child = fork();
                if (child == 0)
                    _exit(0);
                return child > 0;
            }},
        {"make a thread",
            [] {
                pthread_t thread{};
                const auto nothing = [](void*) -> void* { return nullptr; };
                return !threads.empty() && pthread_create(&thread, nullptr, nothing, nullptr) == 0
                    && pthread_join(thread, nullptr) == 0;
            }},
        {"have the kernel end its parent", [] { return fcntl(STDIN_FILENO, F_SETOWN, getppid()) == 0; }},
        {"choose the signal", [] { return fcntl(STDIN_FILENO, F_SETSIG, SIGKILL) == 0; }},
        {"become visible", [] { return prctl(PR_SET_DUMPABLE, 1) == 0; }},
        {"make code", [] {
             return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
         }}};
}

// What of all that succeeds behind the filter, told by a process that has gone through it.
std::string Permitted(Files files)
{
    const TemporaryFolder folder;
    const std::string file = folder.File("file");
    MakeFile(file, "content");
    const std::string told = folder.File("told");
    const pid_t child = fork();
    if (child == 0) {
        // Descriptor 3 is the last one that it keeps.
        dup2(open(told.c_str(), O_WRONLY | O_CREAT, 0600), pixelDescriptor);
        if (!LetGo() || (files == Files::OnlyFonts && !ConfineToFonts()) || !FilterCalls(files))
            _exit(1);
        std::string permitted;
        for (const auto& [what, attempt] : Attempts(file))
            permitted += attempt() ? what + "; " : "";
        permitted += "the end";
        (void)!write(pixelDescriptor, permitted.data(), permitted.size());
        _exit(0);
    }
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(FilesBelow(folder.Path()), (std::vector<std::string>{"file", "told"}));
    return ContentOf(told);
}

}

TEST(Confinement, LeavesNothingButThreads) { EXPECT_EQ(Permitted(Files::None), threads + "the end"); }

TEST(Confinement, LeavesFontsToReadersOfMetafiles)
{
    if (syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) <= 0)
        GTEST_SKIP() << "The test of opening fonts alone is passed over: this kernel has no Landlock.";
    EXPECT_EQ(Permitted(Files::OnlyFonts), threads + "open a font; the end");
}

TEST(Protocol, WhatCannotBeAnAnswer)
{
    const PictureRequest request{PictureFormat::Jpeg, 800, 600};
    EXPECT_TRUE(IsPossible({6000, 4000, 800, 533, 0}, request));
    EXPECT_TRUE(IsPossible({1, 1, 1, 1, 1}, request));
    constexpr std::uint32_t most = ~0U;
    for (const PictureAnswer& answer : {PictureAnswer{0, 1, 1, 1, 0}, {1, 1, 801, 1, 0}, {1, 1, 1, 601, 0},
             {1, 1, 0, 1, 0}, {most, 1, 1, 1, 0}, {8001, 8000, 1, 1, 0}, {65536, 65536, 1, 1, 0}, {1, 1, 1, 1, 2}})
        EXPECT_FALSE(IsPossible(answer, request)) << answer.width << " " << answer.pixelWidth;
}

TEST(PixelParts, WithoutTextsAndProfiles)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setText("A", QString(9000, 'x'));
    QByteArray png;
    QBuffer buffer(&png);
    image.save(&buffer, "PNG");
    const QByteArray parts = PixelParts(png);
    EXPECT_FALSE(!png.contains("zTXt") || parts.contains("zTXt"));
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
