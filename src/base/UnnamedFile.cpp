#include "base/UnnamedFile.h"

#include "base/Files.h"

#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// How many names may be taken by the remains of programs that were killed.
constexpr int mostHiddenNames = 1000;

// The name has the process between its start and its end, and a number: ".attachment-4711-0.part".
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

// A number of a process would not tell who has the file: it may be one of another machine.
void RemoveUnlessHeld(const std::string& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    // For writing, without which a network disk grants no lock.
    const Descriptor file(open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file.IsOpen() && flock(file.Number(), LOCK_EX | LOCK_NB) == 0 && HasName(file, path))
        (void)DeleteFile(path); // it does no harm
}

}

UnnamedFile::UnnamedFile(const std::string& directory)
{
    for (int number = 0; number < mostHiddenNames; ++number) {
        path = directory;
        path.append(hiddenStart).append(std::to_string(getpid())).append("-").append(std::to_string(number));
        path.append(hiddenEnd);
        file = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!file.IsOpen() && errno != EEXIST)
            break;
        // On a disk that knows no locks nobody gets one, and nobody removes the file. A program that looks for remains
        // may be quicker than this lock.
        if (file.IsOpen() && (flock(file.Number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
            && HasName(file, path))
            return;
    }
    path.clear();
}

UnnamedFile::UnnamedFile(std::string existing, Descriptor opened)
    : path(std::move(existing))
    , file(std::move(opened))
{
}

UnnamedFile::~UnnamedFile()
{
    if (IsOpen())
        (void)DeleteFile(path); // nothing more can be done about it
}

UnnamedFile& UnnamedFile::operator=(UnnamedFile&& other) noexcept
{
    std::swap(path, other.path);
    std::swap(file, other.file);
    std::swap(holder, other.holder);
    return *this;
}

const Descriptor& UnnamedFile::FromStart() const
{
    (void)lseek(holder.Number(), 0, SEEK_SET); // else nothing can be read either
    return holder;
}

// A disk may keep names before bytes. Some file systems tell only here, or when the file is closed, that they could not
// write it.
std::error_code UnnamedFile::Finish()
{
    if (fdatasync(file.Number()) != 0 && errno != EINVAL)
        return LastError();
    holder = Descriptor(fcntl(file.Number(), F_DUPFD_CLOEXEC, 0));
    return holder.IsOpen() ? file.Close() : LastError();
}

std::error_code UnnamedFile::TakeName(const std::string& name)
{
    const std::error_code error = RenameUnlessTaken(path, name);
    if (!error)
        path.clear();
    return error;
}

bool HasName(const Descriptor& file, const std::string& path)
{
    struct stat ours = {};
    struct stat named = {};
    return fstat(file.Number(), &ours) == 0 && lstat(path.c_str(), &named) == 0 && ours.st_dev == named.st_dev
        && ours.st_ino == named.st_ino;
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
