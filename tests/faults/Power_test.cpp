#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"

#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

// A disk may keep a name before the bytes that it names, so that a loss of power leaves files of the right name and
// length with nothing in them. Every call of this process that gives a file its name passes through here, does what it
// is to do, and is noted if the file's bytes were not on the disk by then.

namespace {

std::set<std::pair<dev_t, ino_t>> onDisk;
std::vector<std::string> namedTooEarly;
int named = 0;

long NoteAndCall(long call, int descriptor, const void* bytes = nullptr, size_t length = 0)
{
    struct stat status { };
    if (fstat(descriptor, &status) == 0 && call != SYS_write)
        onDisk.insert({status.st_dev, status.st_ino});
    else
        onDisk.erase({status.st_dev, status.st_ino});
    return syscall(call, descriptor, bytes, length);
}

int NameAndCall(const char* file, const char* name, long call, unsigned flags)
{
    struct stat status { };
    if (lstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        ++named;
        if (!onDisk.contains({status.st_dev, status.st_ino}))
            namedTooEarly.emplace_back(name);
    }
    return static_cast<int>(syscall(call, AT_FDCWD, file, AT_FDCWD, name, flags));
}

}

extern "C" {
ssize_t write(int descriptor, const void* bytes, size_t length)
{
    return NoteAndCall(SYS_write, descriptor, bytes, length);
}

int fsync(int descriptor) { return static_cast<int>(NoteAndCall(SYS_fsync, descriptor)); }

int fdatasync(int descriptor) { return static_cast<int>(NoteAndCall(SYS_fdatasync, descriptor)); }

// All paths of this program are absolute.
int rename(const char* from, const char* to) noexcept { return NameAndCall(from, to, SYS_renameat2, 0); }

int renameat2(int, const char* from, int, const char* to, unsigned flags) noexcept
{
    return NameAndCall(from, to, SYS_renameat2, flags);
}

int linkat(int, const char* from, int, const char* to, int flags) noexcept
{
    return NameAndCall(from, to, SYS_linkat, static_cast<unsigned>(flags));
}

int unlink(const char* path) noexcept
{
    struct stat status { };
    if (lstat(path, &status) == 0)
        onDisk.erase({status.st_dev, status.st_ino}); // its number may be another file's next
    return static_cast<int>(syscall(SYS_unlink, path));
}
}

using PowerTest = ProgramTest;

TEST_F(PowerTest, WhatHasItsNameIsOnTheDisk)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")})});
    Start({"alt.kites"}, server.Port());
    MakeFile(destination + "blue.jpg", "blue"); // stays there, and its group gets a copy
    onDisk.clear();
    namedTooEarly.clear();
    named = 0;
    Search();
    EXPECT_THAT(
        FilesBelow(destination), testing::UnorderedElementsAre("alt.kites/red.jpg", "alt.kites/blue.jpg", "blue.jpg"));
    EXPECT_EQ(std::exchange(named, 0), 4); // each as it is stored, and in its group's directory
    Click("cmdRefresh");
    Check("chkMaximumFiles", true);
    Click("Command1"); // Exit
    EXPECT_GE(named, 3); // the groups, the selected ones, the settings
    EXPECT_THAT(namedTooEarly, testing::IsEmpty());
}
