#include "base/Files.h"

#include "base/Text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::error_code LastError() { return {errno, std::generic_category()}; }

class Descriptor {
public:
    explicit Descriptor(int opened)
        : descriptor(opened)
    {
    }
    ~Descriptor()
    {
        if (descriptor >= 0)
            close(descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return descriptor; }

    // A full disk may show only here.
    std::error_code Close()
    {
        const int closing = descriptor;
        descriptor = -1;
        return close(closing) == 0 ? std::error_code() : LastError();
    }

private:
    int descriptor;
};

std::error_code WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return LastError();
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

}

bool FileExists(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

bool DirExists(const std::string& path)
{
    std::error_code error;
    // A separator at the end of a plain file's name would hide the file.
    std::string name = path;
    while (name.size() > 1 && name.ends_with('/'))
        name.pop_back();
    return !name.empty() && std::filesystem::exists(name, error);
}

bool SameFile(const std::string& one, const std::string& other)
{
    std::error_code error;
    return std::filesystem::equivalent(one, other, error);
}

std::error_code ReplaceFile(const std::string& path, std::initializer_list<std::string_view> contents)
{
    // A name of its own: the file's, which may be as long as a name can be, leaves no room for an ending.
    const std::string beside = path.substr(0, path.rfind('/') + 1) + ".replacement.new";
    Descriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (file.Get() < 0)
        return LastError();
    std::error_code error;
    for (const std::string_view content : contents) {
        if (!error)
            error = WriteAll(file.Get(), content);
    }
    if (!error && fsync(file.Get()) != 0)
        error = LastError();
    if (const std::error_code closeError = file.Close(); !error)
        error = closeError;
    if (!error && std::rename(beside.c_str(), path.c_str()) != 0)
        error = LastError();
    if (error)
        unlink(beside.c_str());
    return error;
}

std::error_code WriteFile(const std::string& path, std::string_view content, std::string_view more)
{
    // Removed rather than emptied: what a link leads to stays as it is, and a journalling file system is quicker.
    unlink(path.c_str());
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.Get() < 0)
        return LastError();
    std::error_code error = WriteAll(file.Get(), content);
    if (!error)
        error = WriteAll(file.Get(), more);
    const std::error_code closeError = file.Close();
    return error ? error : closeError;
}

std::error_code AppendToFile(const std::string& path, std::string_view text)
{
    constexpr mode_t ownerAlone = S_IRUSR | S_IWUSR;
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, ownerAlone));
    if (file.Get() < 0)
        return LastError();
    struct stat status { };
    if (fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        (void)fchmod(file.Get(), ownerAlone); // some disks know no rights
    const std::error_code error = WriteAll(file.Get(), text);
    const std::error_code closeError = file.Close();
    return error ? error : closeError;
}

std::error_code DeleteFile(const std::string& path)
{
    return unlink(path.c_str()) == 0 ? std::error_code() : LastError();
}

std::error_code MoveFile(const std::string& from, const std::string& to)
{
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return {};
    if (errno != EXDEV)
        return LastError();
    const std::error_code error = CopyFile(from, to);
    return error ? error : DeleteFile(from);
}

std::error_code CopyFile(const std::string& from, const std::string& to)
{
    // The copy gets its name only when it is whole and on the disk. Of the name that it has until then there may be
    // what a killed program left behind.
    const std::string beside = to.substr(0, to.rfind('/') + 1) + ".copy.part";
    unlink(beside.c_str());
    std::error_code error;
    std::filesystem::copy_file(from, beside, error);
    if (!error) {
        const Descriptor copy(open(beside.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        if (copy.Get() < 0 || (fsync(copy.Get()) != 0 && errno != EINVAL))
            error = LastError();
    }
    if (!error && std::rename(beside.c_str(), to.c_str()) != 0)
        error = LastError();
    if (error)
        unlink(beside.c_str());
    return error;
}

std::error_code MakeDirectory(const std::string& path)
{
    return mkdir(path.c_str(), 0777) == 0 ? std::error_code() : LastError();
}

std::string_view BareName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string CurrentDirectory()
{
    std::error_code error;
    std::string path = std::filesystem::current_path(error).string();
    if (!path.ends_with('/'))
        path += '/';
    return path;
}

std::optional<std::vector<std::string>> NamesIn(const std::string& directory, EntryKind kind)
{
    namespace fs = std::filesystem;
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    std::vector<std::string> names;
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code lost;
        if (kind == EntryKind::Directory ? entry->is_directory(lost) : entry->is_regular_file(lost))
            names.push_back(entry->path().filename().native());
    }
    if (error)
        return std::nullopt;
    std::erase_if(names, [](const std::string& name) { return name.starts_with('.'); });
    std::sort(names.begin(), names.end(), SortsBefore);
    return names;
}

SequentialInput::SequentialInput(const std::string& path)
{
    // Opening a pipe must not wait for its other end.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status { };
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        // A link that leads nowhere is there, too.
        whole = lstat(path.c_str(), &status) != 0 && errno == ENOENT;
        return;
    }
    open = true;
    // One byte more than there seem to be, so that the end is seen without more room.
    content.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t held = 0;
    ssize_t count = 0;
    do {
        if (held == content.size())
            content.resize(2 * held);
        count = read(file.Get(), content.data() + held, content.size() - held);
        held += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (count > 0 || (count < 0 && errno == EINTR));
    content.resize(held);
    whole = count == 0;
}

std::string_view SequentialInput::ReadField()
{
    SkipBlanks();
    const std::size_t end = std::min(content.find_first_of(",\r\n", position), content.size());
    const std::string_view field = std::string_view(content).substr(position, end - position);
    position = end;
    EndField();
    return field;
}

std::string_view SequentialInput::ReadQuotedField()
{
    SkipBlanks();
    if (AtEnd() || content[position] != '"')
        return ReadField();
    const std::size_t end = std::min(content.find('"', position + 1), content.size());
    const std::string_view field = std::string_view(content).substr(position + 1, end - position - 1);
    position = std::min(end + 1, content.size());
    SkipBlanks();
    EndField();
    return field;
}

void SequentialInput::SkipBlanks() { position = std::min(content.find_first_not_of(' ', position), content.size()); }

// One comma or one line end belongs to the field.
void SequentialInput::EndField()
{
    if (content.compare(position, 2, "\r\n") == 0)
        position += 2;
    else if (!AtEnd() && (content[position] == ',' || content[position] == '\r' || content[position] == '\n'))
        ++position;
}

LockFile::LockFile(const std::string& path)
    : descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666))
    , ofAnotherUser(descriptor < 0 && errno == EACCES && FileExists(path))
    , heldByAnother(descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
{
}

LockFile::~LockFile()
{
    if (descriptor >= 0)
        close(descriptor);
}

// A byte 0 ends it: cutting the file to its length each time would cost the disk more than the note.
void LockFile::SetNote(const std::string& path)
{
    (void)!pwrite(descriptor, path.c_str(), path.size() + 1, 0); // without it, something stays behind
}

std::string LockFile::Note() const
{
    std::string note(PATH_MAX, '\0');
    const ssize_t count = pread(descriptor, note.data(), note.size(), 0);
    note.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    note.resize(std::min(note.find('\0'), note.size()));
    return note;
}

RandomFile::RandomFile(const std::string& path, RandomAccess access, std::size_t recordLength)
    : descriptor(
        open(path.c_str(), O_CLOEXEC | O_NONBLOCK | (access == RandomAccess::Read ? O_RDONLY : O_RDWR | O_CREAT), 0666))
    , length(recordLength)
{
}

RandomFile::~RandomFile()
{
    if (descriptor >= 0)
        close(descriptor);
}

std::int64_t RandomFile::RecordCount() const
{
    struct stat status { };
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    return status.st_size / static_cast<std::int64_t>(length);
}

bool RandomFile::Read(std::int64_t number, std::string& record) const
{
    record.resize(length);
    const off_t offset = (number - 1) * static_cast<off_t>(length);
    return descriptor >= 0 && number >= 1
        && pread(descriptor, record.data(), length, offset) == static_cast<ssize_t>(length);
}

bool RandomFile::Write(std::int64_t number, std::string_view record)
{
    const off_t offset = (number - 1) * static_cast<off_t>(length);
    return descriptor >= 0 && number >= 1 && record.size() == length
        && pwrite(descriptor, record.data(), length, offset) == static_cast<ssize_t>(length);
}
