#include "base/Files.h"

#include "base/Text.h"
#include "base/UnnamedFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

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
    const std::string beside = DirectoryOf(path) + ".replacement.new";
    Descriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!file.IsOpen())
        return LastError();
    std::error_code error;
    for (const std::string_view content : contents) {
        if (!error)
            error = file.Write(content);
    }
    if (!error && fsync(file.Number()) != 0)
        error = LastError();
    if (const std::error_code closeError = file.Close(); !error)
        error = closeError;
    if (!error && std::rename(beside.c_str(), path.c_str()) != 0)
        error = LastError();
    if (error)
        (void)DeleteFile(beside);
    return error;
}

std::error_code WriteFile(const std::string& path, std::string_view content, std::string_view more)
{
    // Removed rather than emptied: what a link leads to stays as it is, and a journalling file system is quicker.
    (void)DeleteFile(path);
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen())
        return LastError();
    std::error_code error = file.Write(content);
    if (!error)
        error = file.Write(more);
    const std::error_code closeError = file.Close();
    return error ? error : closeError;
}

std::error_code AppendToFile(const std::string& path, std::string_view text)
{
    constexpr mode_t ownerAlone = S_IRUSR | S_IWUSR;
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, ownerAlone));
    if (!file.IsOpen())
        return LastError();
    struct stat status { };
    if (fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        (void)fchmod(file.Number(), ownerAlone); // some disks know no rights
    const std::error_code error = file.Write(text);
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
    // The copy gets its name only when it is whole and on the disk.
    UnnamedFile copy(DirectoryOf(to));
    if (!copy.IsOpen())
        return LastError();
    std::error_code error;
    std::filesystem::copy_file(from, copy.Path(), std::filesystem::copy_options::overwrite_existing, error);
    if (!error)
        error = copy.Finish();
    if (!error)
        error = MoveFile(copy.Path(), to);
    if (!error)
        copy.Leave();
    return error;
}

// Most file systems can do so in one step. Many others can give a file two names for a moment. On the rest an empty
// file holds the place.
std::error_code RenameUnlessTaken(const std::string& from, const std::string& to)
{
#if defined(RENAME_NOREPLACE)
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno != EINVAL && errno != ENOSYS)
        return LastError();
#endif
    if (link(from.c_str(), to.c_str()) == 0) {
        (void)DeleteFile(from); // the file has its name, and that it has another one too does no harm
        return {};
    }
    if (errno == EEXIST)
        return LastError();
    if (!Descriptor(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666)).IsOpen())
        return LastError();
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return {};
    const std::error_code error = LastError();
    (void)DeleteFile(to);
    return error;
}

std::error_code MakeDirectory(const std::string& path)
{
    return mkdir(path.c_str(), 0777) == 0 ? std::error_code() : LastError();
}

std::string_view BareName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string DirectoryOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

std::string WithSeparator(std::string path)
{
    if (!path.ends_with('/'))
        path += '/';
    return path;
}

std::string CurrentDirectory()
{
    std::error_code error;
    return WithSeparator(std::filesystem::current_path(error).string());
}

std::string ExecutableDirectory()
{
    std::error_code error;
    return WithSeparator(std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string());
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
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        // A link that leads nowhere is there, too.
        whole = lstat(path.c_str(), &status) != 0 && errno == ENOENT;
        return;
    }
    open = true;
    // One byte more than there seem to be, so that the end is seen without more room.
    content.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t held = 0;
    ssize_t count = 0;
    while ((count = file.Read(content.data() + held, content.size() - held)) > 0) {
        held += static_cast<std::size_t>(count);
        if (held < content.size())
            break;
        content.resize(2 * held);
    }
    content.resize(held);
    whole = count >= 0;
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
{
    const auto tryToOpen = [&] {
        file = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
        return file.IsOpen() || errno != EACCES;
    };
    struct stat status { };
    // Whoever owns it can put right what its rights have become.
    if (!tryToOpen() && lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        ofAnotherUser = status.st_uid != geteuid();
        if (!ofAnotherUser && chmod(path.c_str(), S_IRUSR | S_IWUSR) == 0)
            (void)tryToOpen();
    }
    heldByAnother = file.IsOpen() && flock(file.Number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// A byte 0 ends it: cutting the file to its length each time would cost the disk more than the note.
void LockFile::SetNote(const std::string& path)
{
    (void)!pwrite(file.Number(), path.c_str(), path.size() + 1, 0); // without it, something stays behind
}

std::string LockFile::Note() const
{
    std::string note(PATH_MAX, '\0');
    const ssize_t count = pread(file.Number(), note.data(), note.size(), 0);
    note.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    note.resize(std::min(note.find('\0'), note.size()));
    return note;
}
