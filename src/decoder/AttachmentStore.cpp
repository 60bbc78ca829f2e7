#include "decoder/AttachmentStore.h"

#include "decoder/AttachmentName.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// So many files of one name in a directory are looked at one by one. If there are more, the end of their numbers is
// looked for in steps.
constexpr std::size_t fewFilesOfOneName = 100;
constexpr std::size_t mostFilesOfOneName = 1 << 24;

// How many hidden names may be taken by the remains of programs that were killed.
constexpr int mostHiddenNames = 1000;

// The hidden name has the process between its start and its end, and a number: ".attachment-4711-0.part".
constexpr std::string_view hiddenStart = ".attachment-";
constexpr std::string_view hiddenEnd = ".part";

bool IsHiddenName(std::string_view name)
{
    if (!name.starts_with(hiddenStart) || !name.ends_with(hiddenEnd))
        return false;
    name.remove_prefix(hiddenStart.size());
    pid_t process = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    return error == std::errc() && *end == '-' && process > 0;
}

// Is this open file still the one of that name?
bool HasName(int file, const std::string& path)
{
    struct stat ours = {};
    struct stat named = {};
    return fstat(file, &ours) == 0 && lstat(path.c_str(), &named) == 0 && ours.st_dev == named.st_dev
        && ours.st_ino == named.st_ino;
}

// Removes a hidden file that nobody holds. A number of a process would not tell: it may be one of another machine.
void RemoveUnlessHeld(const std::string& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    // For writing, without which a network disk grants no lock.
    const int file = open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return;
    if (flock(file, LOCK_EX | LOCK_NB) == 0 && HasName(file, path))
        (void)unlink(path.c_str()); // it does no harm
    close(file);
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// A file that is read from its start, and never through a link.
class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        : file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))
    {
    }
    // One that is open already, and whose place it moves.
    explicit OpenFile(int descriptor)
        : file(fcntl(descriptor, F_DUPFD_CLOEXEC, 0))
    {
        (void)lseek(file, 0, SEEK_SET); // else nothing can be read either
    }
    ~OpenFile()
    {
        if (file >= 0)
            close(file);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    // The number of bytes read: `size`, less at the end of the file, or -1.
    ssize_t Read(char* to, std::size_t size) const
    {
        std::size_t done = 0;
        while (done < size) {
            const ssize_t count = read(file, to + done, size - done);
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return -1;
            if (count == 0)
                break;
            done += static_cast<std::size_t>(count);
        }
        return static_cast<ssize_t>(done);
    }

private:
    int file;
};

bool SameBytes(const OpenFile& one, const OpenFile& other)
{
    constexpr std::size_t blockSize = 64 * 1024;
    const auto blocks = std::make_unique_for_overwrite<char[]>(2 * blockSize);
    char* const left = blocks.get();
    char* const right = left + blockSize;
    for (;;) {
        const ssize_t leftCount = one.Read(left, blockSize);
        const ssize_t rightCount = other.Read(right, blockSize);
        if (leftCount < 0 || leftCount != rightCount)
            return false;
        const auto count = static_cast<std::size_t>(leftCount);
        if (std::string_view(left, count) != std::string_view(right, count))
            return false;
        if (count < blockSize)
            return true;
    }
}

// Gives a file another name unless that is taken: 0, or the error. Most file systems can do so in one step. Many others
// can give a file two names for a moment. On the rest an empty file holds the place.
int RenameUnlessTaken(const std::string& from, const std::string& to)
{
#if defined(RENAME_NOREPLACE)
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
#endif
    if (link(from.c_str(), to.c_str()) == 0) {
        (void)unlink(from.c_str()); // the attachment has its name, and that it has another one too does no harm
        return 0;
    }
    if (errno == EEXIST)
        return errno;
    const int place = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (place < 0)
        return errno;
    close(place);
    if (rename(from.c_str(), to.c_str()) == 0)
        return 0;
    const int error = errno;
    (void)unlink(to.c_str());
    return error;
}

}

AttachmentStore::AttachmentStore(std::string storeDirectory, std::string bodyFile)
    : directory(std::move(storeDirectory))
    , bodyPath(std::move(bodyFile))
{
}

AttachmentStore::~AttachmentStore() { Drop(); }

void AttachmentStore::Open(std::string_view name)
{
    Drop();
    wantedName = SafeFileName(name);
}

// The file is made with the first bytes and not before, so that a body full of broken attachments costs nothing.
void AttachmentStore::Write(std::string_view bytes)
{
    if (failed || (hidden < 0 && !OpenHiddenFile()) || !WriteAll(hidden, bytes)) {
        Drop();
        failed = true;
    }
}

bool AttachmentStore::OpenHiddenFile()
{
    for (int number = 0; number < mostHiddenNames; ++number) {
        hiddenPath = directory;
        hiddenPath.append(hiddenStart).append(std::to_string(getpid())).append("-").append(std::to_string(number));
        hiddenPath.append(hiddenEnd);
        hidden = open(hiddenPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (hidden < 0 && errno != EEXIST)
            break;
        if (hidden < 0)
            continue;
        // On a disk that knows no locks nobody gets one, and nobody removes the file. A program that looks for remains
        // may be quicker than this lock.
        if ((flock(hidden, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) && HasName(hidden, hiddenPath))
            return true;
        close(std::exchange(hidden, -1));
    }
    hiddenPath.clear();
    return false;
}

bool AttachmentStore::Keep()
{
    Write({}); // an attachment of no bytes is a file too
    // What has its name is whole, also after the power went: a disk may keep names before bytes. Some file systems tell
    // only here, or when the file is closed, that they could not write it.
    if (!failed && fdatasync(hidden) != 0 && errno != EINVAL)
        failed = true;
    if (!failed) {
        holder = fcntl(hidden, F_DUPFD_CLOEXEC, 0); // the lock stays until the file has its name
        failed = close(std::exchange(hidden, -1)) != 0 || holder < 0;
    }
    const bool kept = !failed && (TakeName(wantedName) || TakeName(PortableFileName(wantedName)));
    Drop();
    return kept;
}

// False if the file system does not take such a name.
bool AttachmentStore::TakeName(const std::string& safeName)
{
    for (std::size_t number = 1; number < mostFilesOfOneName; ++number) {
        if (number == fewFilesOfOneName)
            number = FreeNumber(safeName);
        const std::string name = NumberedFileName(safeName, number);
        const int error = RenameUnlessTaken(hiddenPath, directory + name);
        if (error == 0)
            hiddenPath.clear();
        else if (error != EEXIST)
            return false;
        else if (!IsStoredAs(directory + name))
            continue;
        else if (std::find(names.begin(), names.end(), name) == names.end())
            foundNames.push_back(name);
        names.push_back(name);
        return true;
    }
    return false;
}

// A number from fewFilesOfOneName on that is free while the one before it is not, as far as can be told from outside.
std::size_t AttachmentStore::FreeNumber(const std::string& safeName) const
{
    const auto taken = [&](std::size_t number) {
        struct stat file = {};
        return lstat((directory + NumberedFileName(safeName, number)).c_str(), &file) == 0;
    };
    std::size_t low = fewFilesOfOneName - 1;
    std::size_t high = fewFilesOfOneName;
    while (high < mostFilesOfOneName && taken(high)) {
        low = high;
        high *= 2;
    }
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        (taken(middle) ? low : high) = middle;
    }
    return high;
}

// Does this file hold the attachment that is to be kept?
bool AttachmentStore::IsStoredAs(const std::string& path) const
{
    struct stat ours = {};
    struct stat theirs = {};
    struct stat body = {};
    // Looked at before it is opened, since opening a device or a pipe may have effects.
    if (lstat(hiddenPath.c_str(), &ours) != 0 || lstat(path.c_str(), &theirs) != 0 || !S_ISREG(theirs.st_mode)
        || ours.st_size != theirs.st_size)
        return false;
    if (stat(bodyPath.c_str(), &body) == 0 && body.st_dev == theirs.st_dev && body.st_ino == theirs.st_ino)
        return false;
    const OpenFile one(holder); // on some shares nobody else can read what is locked, not even this process
    const OpenFile other(path);
    return SameBytes(one, other);
}

void AttachmentStore::Drop()
{
    if (!hiddenPath.empty())
        (void)unlink(hiddenPath.c_str()); // nothing more can be done about it
    hiddenPath.clear();
    for (int* const file : {&hidden, &holder}) {
        if (*file >= 0)
            close(std::exchange(*file, -1));
    }
    failed = false;
}

void RemoveRemains(const std::string& directory)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        if (IsHiddenName(entry->path().filename().native()))
            RemoveUnlessHeld(entry->path().native());
    }
}
