#include "decoder/SetFolder.h"

#include "base/Files.h"
#include "base/UnnamedFile.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <utility>

namespace {

constexpr std::string_view folderName = ".tamarack-parts";
constexpr std::string_view lockName = "lock";
constexpr std::string_view scratchName = "scratch";
constexpr std::string_view replacementName = ".replacement.new"; // of a journal, as ReplaceFile has it
constexpr std::string_view journalEnding = ".journal";
constexpr std::string_view dataEnding = ".data";
constexpr std::size_t keyDigits = 16;
constexpr std::size_t setNameSize = keyDigits + 2;

constexpr auto pauseBetweenTries = std::chrono::milliseconds(5);

constexpr auto countingLasts = std::chrono::hours(24);

// By 64-bit FNV-1a. Two attachments of one number are told apart by what stands in the journal.
std::string DigitsOf(std::string_view name, std::uint64_t size)
{
    std::uint64_t hash = 0xcbf29ce484222325;
    const auto take = [&hash](unsigned char byte) { hash = (hash ^ byte) * 0x100000001b3; };
    for (const char byte : name)
        take(static_cast<unsigned char>(byte));
    for (int byte = 0; byte < 8; ++byte)
        take(static_cast<unsigned char>(size >> 8 * byte));
    char digits[keyDigits + 1];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

bool IsSetName(std::string_view name)
{
    return name.size() == setNameSize && name.find_first_not_of("0123456789abcdef") == keyDigits
        && name[keyDigits] == '-' && name.back() >= '0' && name.back() < '0' + mostSetsOfOneName;
}

std::string FileOf(std::string_view path, std::string_view ending) { return std::string(path).append(ending); }

// When the last part came, by the system's clock; 0 if there is no journal.
SetFolder::Moment LastAddition(const std::string& path)
{
    struct stat status = {};
    if (lstat(SetFolder::JournalOf(path).c_str(), &status) != 0)
        return {};
    return std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
}

bool IsThere(const std::string& file)
{
    struct stat status = {};
    return lstat(file.c_str(), &status) == 0;
}

// What could not be opened: may it be there all the same, as a set has it?
bool MayBeOurs(const std::string& file)
{
    struct stat status = {};
    if (lstat(file.c_str(), &status) != 0)
        return errno != ENOENT && errno != ENOTDIR;
    return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

SetFolder::Moment Now() { return std::chrono::system_clock::now().time_since_epoch(); }

}

bool SetFolder::Enter(const std::string& destination, Missing missing, Busy busy)
{
    const std::string directory = FileOf(destination, folderName);
    const auto deadline = std::chrono::steady_clock::now() + LongestWait;
    if (folder != directory + "/")
        Forget(directory + "/");
    const bool waits = busy == Busy::Wait && !waitedInVain;
    bool isBusy = false;
    for (; std::chrono::steady_clock::now() < deadline; std::this_thread::sleep_for(pauseBetweenTries)) {
        isBusy = false;
        const bool isNew = missing == Missing::Make && !MakeDirectory(directory);
        struct stat status = {};
        // A link would lead out of the destination.
        if (lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            break;
        if (isNew)
            Forget(directory + "/");
        const std::string lockPath = FileOf(folder, lockName);
        lock = Descriptor(open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
        if (!lock.IsOpen()) {
            // The folder may have gone with its last set; or something else stands there. A lock that cannot be opened
            // now may be in another program's hand.
            if (errno != ENOENT
                && (lstat(lockPath.c_str(), &status) != 0 || S_ISREG(status.st_mode) || DeleteFile(lockPath)))
                break;
            continue;
        }
        mayRemove = flock(lock.Number(), LOCK_EX | LOCK_NB) == 0;
        // On a disk that knows no locks nobody gets one, and nobody removes what another one may have in hand.
        if ((!mayRemove && errno != EWOULDBLOCK) || (mayRemove && HasName(lock, lockPath))) {
            waitedInVain = false;
            if (countedAt == Moment() || Now() - countedAt > countingLasts)
                Count();
            return true;
        }
        isBusy = !mayRemove;
        if (isBusy && !waits)
            break;
    }
    lock = {};
    waitedInVain = waitedInVain || (isBusy && waits);
    return false;
}

void SetFolder::Leave()
{
    if (lock.IsOpen() && countedAt != Moment() && counted.empty()) {
        (void)DeleteFile(FileOf(folder, lockName));
        (void)rmdir(folder.c_str()); // unless somebody else has put something there
    }
    lock = Descriptor();
}

void SetFolder::Forget(const std::string& newFolder)
{
    folder = newFolder;
    countedAt = {};
    counted.clear();
    whole.clear();
    waitedInVain = false;
    waiting = {};
    bytesOnDisk = 0;
}

void SetFolder::Count(const std::string& keyInHand)
{
    Forget(folder);
    const auto files = NamesIn(folder, EntryKind::File);
    if (!files)
        return;
    countedAt = Now();
    if (mayRemove)
        (void)DeleteFile(FileOf(folder, replacementName));
    for (const std::string& file : *files) {
        if (!IsSetName(std::string_view(file).substr(0, setNameSize)))
            continue;
        const std::string path = folder + file.substr(0, setNameSize);
        if (counted.contains(path))
            continue;
        bool isUnclear = false;
        const auto set = Read(path, isUnclear);
        if (set && countedAt - LastAddition(path) <= longestWaitOfSets) {
            if (set->journal.IsWhole() && !unfinished.contains(path))
                whole.push_back(path);
            Note(*set);
        } else if (mayRemove && !isUnclear && (keyInHand.empty() || !path.starts_with(keyInHand))) {
            Remove(path);
        }
    }
}

void SetFolder::Note(const KeptSet& set)
{
    struct stat data = {};
    struct stat journal = {};
    if (lstat(DataOf(set.path).c_str(), &data) != 0 || lstat(JournalOf(set.path).c_str(), &journal) != 0)
        return;
    Uncount(set.path);
    const std::uint64_t articles = set.journal.Articles();
    const Counted now{
        set.journal.IsWhole() ? WaitingSets() : WaitingSets{1, articles - set.journal.Parts().size(), articles},
        static_cast<std::uint64_t>(data.st_blocks + journal.st_blocks) * 512, LastAddition(set.path)};
    counted[set.path] = now;
    waiting.attachments += now.waiting.attachments;
    waiting.missing += now.waiting.missing;
    waiting.articles += now.waiting.articles;
    bytesOnDisk += now.bytes;
}

void SetFolder::Uncount(const std::string& path)
{
    const auto found = counted.find(path);
    if (found == counted.end())
        return;
    const Counted& old = found->second;
    waiting.attachments -= old.waiting.attachments;
    waiting.missing -= old.waiting.missing;
    waiting.articles -= old.waiting.articles;
    bytesOnDisk -= old.bytes;
    counted.erase(found);
}

void SetFolder::Remove(const std::string& path)
{
    (void)DeleteFile(DataOf(path));
    (void)DeleteFile(JournalOf(path));
    Uncount(path);
    unfinished.erase(path);
}

bool SetFolder::ReplaceJournal(const KeptSet& set) const
{
    // What a stranger has put there may be a pipe, or another file's second name.
    (void)DeleteFile(FileOf(folder, replacementName));
    return !ReplaceFile(JournalOf(set.path), {set.journal.Bytes()});
}

bool SetFolder::MakeRoom(std::uint64_t size, bool addsSet, const std::string& key)
{
    const auto hasRoom = [&](std::uint64_t share) { // of the bounds, in 16ths
        return (!addsSet || counted.size() < mostSets * share / 16)
            && bytesOnDisk + size <= mostBytesOfSets / 16 * share;
    };
    if (hasRoom(16))
        return true;
    Count(key);
    if (hasRoom(16) || !mayRemove)
        return hasRoom(16);
    std::vector<std::pair<Moment, std::string>> oldest;
    for (const auto& [path, set] : counted) {
        if (!path.starts_with(key))
            oldest.emplace_back(set.added, path);
    }
    std::sort(oldest.begin(), oldest.end());
    // Some more, so that the next ones find room.
    for (auto next = oldest.begin(); next != oldest.end() && !hasRoom(15); ++next)
        Remove(next->second);
    return hasRoom(16);
}

WaitingSets SetFolder::Waiting(const std::string& destination)
{
    const std::string directory = FileOf(destination, folderName);
    if (folder != directory + "/" || !DirExists(directory))
        Forget(directory + "/");
    if (countedAt == Moment() && DirExists(directory) && Enter(destination, Missing::Leave, Busy::GiveUp))
        Leave();
    return waiting;
}

std::string SetFolder::KeyOf(std::string_view name, std::uint64_t size) const
{
    return folder + DigitsOf(name, size) + "-";
}

std::vector<KeptSet> SetFolder::SetsOf(std::string_view name, std::uint64_t size) const
{
    std::vector<KeptSet> found;
    const std::string key = KeyOf(name, size);
    for (int number = 0; number < mostSetsOfOneName; ++number) {
        bool isUnclear = false;
        auto set = Read(key + std::to_string(number), isUnclear);
        if (set && set->journal.Name() == name && set->journal.Size() == size)
            found.push_back(std::move(*set));
    }
    return found;
}

std::string SetFolder::NewPath(const std::string& key)
{
    std::string oldest;
    Moment oldestAddition = Moment::max();
    for (int number = 0; number < mostSetsOfOneName; ++number) {
        std::string path = key + std::to_string(number);
        if (!mayRemove) {
            if (!IsThere(DataOf(path)) && !IsThere(JournalOf(path)))
                return path;
            continue;
        }
        bool isUnclear = false;
        const bool isSet = Read(path, isUnclear).has_value();
        if (isUnclear)
            continue;
        if (!isSet) {
            Remove(path);
            if (!IsThere(DataOf(path)) && !IsThere(JournalOf(path)))
                return path;
        } else if (LastAddition(path) < oldestAddition) {
            oldestAddition = LastAddition(path);
            oldest = std::move(path);
        }
    }
    if (!oldest.empty())
        Remove(oldest);
    return oldest;
}

bool SetFolder::HasWhole(const std::string& destination) const
{
    return !whole.empty() && folder == FileOf(destination, folderName) + "/";
}

std::vector<std::string> SetFolder::TakeWhole() { return std::exchange(whole, {}); }

void SetFolder::TryAgain()
{
    for (const std::string& path : std::exchange(unfinished, {})) {
        if (path.starts_with(folder))
            whole.push_back(path);
    }
}

Descriptor SetFolder::MakeScratch() const
{
    const std::string path = FileOf(folder, scratchName);
    (void)DeleteFile(path);
    Descriptor file = MakeAnew(path);
    (void)DeleteFile(path);
    return file;
}

std::string SetFolder::JournalOf(std::string_view path) { return FileOf(path, journalEnding); }

std::string SetFolder::DataOf(std::string_view path) { return FileOf(path, dataEnding); }

std::optional<KeptSet> SetFolder::Read(const std::string& path, bool& isUnclear)
{
    const Descriptor file = Open(JournalOf(path), O_RDONLY);
    const Descriptor data = Open(DataOf(path), O_RDONLY);
    struct stat status = {};
    isUnclear = (file.IsOpen() || MayBeOurs(JournalOf(path))) && (data.IsOpen() || MayBeOurs(DataOf(path)));
    if (!file.IsOpen() || !data.IsOpen() || fstat(file.Number(), &status) != 0)
        return std::nullopt;
    std::string bytes(std::min(static_cast<std::size_t>(status.st_size), SetJournal::longest), '\0');
    const ssize_t count = file.Read(bytes.data(), bytes.size());
    isUnclear = count < 0;
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    auto journal = SetJournal::Read(bytes);
    if (!journal)
        return std::nullopt;
    return KeptSet{path, std::move(*journal), status.st_size};
}

Descriptor SetFolder::Open(const std::string& file, int access)
{
    Descriptor opened(open(file.c_str(), access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!opened.IsOpen() || fstat(opened.Number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink > 1)
        return {};
    return opened;
}

Descriptor SetFolder::MakeAnew(const std::string& file)
{
    return Descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
}
