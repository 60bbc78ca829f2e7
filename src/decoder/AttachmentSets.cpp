#include "decoder/AttachmentSets.h"

#include "base/Files.h"

#include <libdeflate.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <utility>

// The folder, its lock, and in it two files for each set: "0123456789abcdef-0.data" and "0123456789abcdef-0.journal".
// The digits are made from name and size of the attachment, so that a part finds its sets by opening few files, however
// many there are. The data come before the record that tells of them, and the journal before the name is given: a kill
// at any moment leaves a set that has the part, or has not. Whether the disk has kept all of it when the power went
// shows when the whole is read once more, at the end.

namespace {

constexpr std::string_view folderName = ".tamarack-parts";
constexpr std::string_view lockName = "lock";
constexpr std::string_view scratchName = "scratch";
constexpr std::string_view journalEnding = ".journal";
constexpr std::string_view dataEnding = ".data";
constexpr std::size_t keyDigits = 16;
constexpr std::size_t setNameSize = keyDigits + 2;

constexpr std::size_t blockSize = 256 * 1024;

// Another program has the folder while a part is decoded, or a whole attachment is read. One that has stopped there
// must not stop this one.
constexpr auto longestWaitForLock = std::chrono::seconds(10);
constexpr auto pauseBetweenTries = std::chrono::milliseconds(5);

constexpr std::time_t countingLasts = 24 * 60 * 60; // in seconds

// By 64-bit FNV-1a. Two attachments of one number are told apart by what stands in the journal.
std::string KeyOf(std::string_view name, std::uint64_t size)
{
    std::uint64_t hash = 0xcbf29ce484222325;
    const auto take = [&hash](unsigned char byte) { hash = (hash ^ byte) * 0x100000001b3; };
    for (const char byte : name)
        take(static_cast<unsigned char>(byte));
    for (int byte = 0; byte < 8; ++byte)
        take(static_cast<unsigned char>(size >> 8 * byte));
    char digits[keyDigits + 1];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return std::string(digits) + "-";
}

bool IsSetName(std::string_view name)
{
    return name.size() == setNameSize && name.find_first_not_of("0123456789abcdef") == keyDigits
        && name[keyDigits] == '-' && name.back() >= '0' && name.back() < '0' + mostSetsOfOneName;
}

std::string FileOf(std::string_view path, std::string_view ending) { return std::string(path).append(ending); }

// None for a link, a directory or a pipe, and for a file that has another name too: what is done to it would be done
// outside of the folder.
Descriptor OpenPlain(const std::string& path, int access)
{
    Descriptor file(open(path.c_str(), access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink > 1)
        return {};
    return file;
}

// In place of what may be there. None if that is a directory.
Descriptor MakeAnew(const std::string& path)
{
    (void)DeleteFile(path);
    return Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
}

[[nodiscard]] bool WriteAt(const Descriptor& file, std::string_view bytes, std::uint64_t offset)
{
    while (!bytes.empty()) {
        const ssize_t count = pwrite(file.Number(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        offset += static_cast<std::size_t>(count);
    }
    return true;
}

// Hands out so many bytes of a file, block by block, until `take` has enough. False if there are less.
template <class Take>
[[nodiscard]] bool ReadFrom(const Descriptor& file, std::uint64_t offset, std::uint64_t size, const Take& take)
{
    const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
    while (size != 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, blockSize));
        const ssize_t count = pread(file.Number(), block.get(), wanted, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0 || !take(std::string_view(block.get(), static_cast<std::size_t>(count))))
            return false;
        offset += static_cast<std::size_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// Gives back what bytes that do not count take on the disk, where it can do that.
void Punch(const Descriptor& file, std::uint64_t begin, std::uint64_t size)
{
    (void)fallocate(
        file.Number(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(begin), static_cast<off_t>(size));
}

std::uint32_t Checksum(std::uint32_t before, std::string_view bytes)
{
    return static_cast<std::uint32_t>(libdeflate_crc32(before, bytes.data(), bytes.size()));
}

// Nothing for what is no set.
std::optional<SetJournal> ReadJournal(const std::string& path)
{
    const Descriptor file = OpenPlain(FileOf(path, journalEnding), O_RDONLY);
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !OpenPlain(FileOf(path, dataEnding), O_RDONLY).IsOpen())
        return std::nullopt;
    std::string bytes(std::min(static_cast<std::size_t>(status.st_size), SetJournal::longest), '\0');
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(file.Read(bytes.data(), bytes.size()), 0)));
    return SetJournal::Read(bytes);
}

// 0 if there is no journal.
std::time_t LastAddition(const std::string& path)
{
    struct stat status = {};
    return lstat(FileOf(path, journalEnding).c_str(), &status) == 0 ? status.st_mtime : 0;
}

}

// The folder.

bool AttachmentSets::Enter(const std::string& destination, Missing missing)
{
    const std::string directory = FileOf(destination, folderName);
    const auto deadline = std::chrono::steady_clock::now() + longestWaitForLock;
    for (; std::chrono::steady_clock::now() < deadline; std::this_thread::sleep_for(pauseBetweenTries)) {
        const bool isNew = missing == Missing::Make && !MakeDirectory(directory);
        struct stat status = {};
        // A link would lead out of the destination.
        if (lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            return false;
        if (isNew || folder != directory + "/")
            ForgetCounted(directory + "/");
        const std::string lockPath = FileOf(folder, lockName);
        lock = Descriptor(open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
        if (!lock.IsOpen()) {
            // The folder may have gone with its last set; or something else stands there.
            if (errno != ENOENT && DeleteFile(lockPath))
                return false;
            continue;
        }
        mayRemove = flock(lock.Number(), LOCK_EX | LOCK_NB) == 0;
        // On a disk that knows no locks nobody gets one, and nobody removes what another one may have in hand.
        if ((!mayRemove && errno != EWOULDBLOCK) || (mayRemove && HasName(lock, lockPath))) {
            if (countedAt == 0 || std::time(nullptr) - countedAt > countingLasts)
                Count();
            return true;
        }
    }
    lock = Descriptor();
    return false;
}

// The folder goes with its last set.
void AttachmentSets::Leave()
{
    if (lock.IsOpen() && counted.empty()) {
        (void)DeleteFile(FileOf(folder, lockName));
        (void)rmdir(folder.c_str()); // unless somebody else has put something there
    }
    lock = Descriptor();
}

void AttachmentSets::ForgetCounted(const std::string& newFolder)
{
    folder = newFolder;
    countedAt = 0;
    counted.clear();
    whole.clear();
    waiting = {};
    bytesOnDisk = 0;
}

void AttachmentSets::Count()
{
    ForgetCounted(folder);
    countedAt = std::time(nullptr);
    if (mayRemove)
        (void)DeleteFile(FileOf(folder, ".replacement.new")); // of a journal
    for (const std::string& file : NamesIn(folder, EntryKind::File).value_or(std::vector<std::string>())) {
        if (!IsSetName(std::string_view(file).substr(0, setNameSize)))
            continue;
        const std::string path = folder + file.substr(0, setNameSize);
        if (counted.contains(path))
            continue;
        const auto journal = ReadJournal(path);
        if (journal && countedAt - LastAddition(path) <= longestWaitOfSets) {
            NoteSet({path, *journal});
            if (journal->IsWhole())
                whole.push_back(path);
        } else if (mayRemove) {
            Remove(path);
        }
    }
}

void AttachmentSets::NoteSet(const Set& set)
{
    struct stat data = {};
    if (lstat(FileOf(set.path, dataEnding).c_str(), &data) != 0)
        return;
    Uncount(set.path);
    const Counted now{set.journal.Parts().size(), set.journal.Articles(),
        static_cast<std::uint64_t>(data.st_blocks) * 512, LastAddition(set.path)};
    counted[set.path] = now;
    ++waiting.attachments;
    waiting.missing += now.articles - now.parts;
    waiting.articles += now.articles;
    bytesOnDisk += now.bytes;
}

void AttachmentSets::Uncount(const std::string& path)
{
    const auto found = counted.find(path);
    if (found == counted.end())
        return;
    const Counted& old = found->second;
    --waiting.attachments;
    waiting.missing -= old.articles - old.parts;
    waiting.articles -= old.articles;
    bytesOnDisk -= old.bytes;
    counted.erase(found);
}

void AttachmentSets::Remove(const std::string& path)
{
    (void)DeleteFile(FileOf(path, dataEnding));
    (void)DeleteFile(FileOf(path, journalEnding));
    Uncount(path);
}

// Removes the oldest sets, but none of the name in hand, until there is room for so many bytes. False if there is none.
bool AttachmentSets::MakeRoom(std::uint64_t size)
{
    std::size_t most = mostSets;
    const auto hasRoom = [&] { return counted.size() < most && bytesOnDisk + size <= mostBytesOfSets; };
    if (hasRoom())
        return true;
    Count();
    if (hasRoom() || !mayRemove)
        return hasRoom();
    most -= most / 16; // so that the next ones find room
    std::vector<std::pair<std::time_t, std::string>> oldest;
    for (const auto& [path, set] : counted) {
        if (!path.starts_with(key))
            oldest.emplace_back(set.added, path);
    }
    std::sort(oldest.begin(), oldest.end());
    for (auto next = oldest.begin(); next != oldest.end() && !hasRoom(); ++next)
        Remove(next->second);
    return hasRoom();
}

WaitingSets AttachmentSets::Waiting(const std::string& destination)
{
    const std::string directory = FileOf(destination, folderName);
    if (folder != directory + "/" || !DirExists(directory))
        ForgetCounted(directory + "/");
    if (countedAt == 0 && DirExists(directory) && Enter(destination, Missing::Leave))
        Leave();
    return waiting;
}

// The part.

void AttachmentSets::Open(const std::string& destination, std::string_view newName, const PartPlace& newPlace)
{
    Drop();
    name = newName;
    place = newPlace;
    refusal = Outcome::Damaged;
    if (place.wholeSize > largestSpreadAttachment || place.total > mostParts || name.size() > longestSpreadName)
        return;
    refusal = Outcome::NotWritten;
    if (!Enter(destination, Missing::Make))
        return;
    key = folder + KeyOf(name, place.wholeSize);
    sets = SetsOfKey();
    if (!MakeRoom(place.size)) {
        refusal = Outcome::Damaged;
        return;
    }
    // Nearly always it is clear where the bytes belong before the first one is there.
    const ReceivedPart part = PartInHand();
    targetIsNew = sets.empty();
    if (targetIsNew)
        targetPath = NewPath();
    else if (sets.size() == 1 && sets.front().journal.Admits(part) && sets.front().journal.IsFree(part))
        targetPath = sets.front().path;
    if (!targetIsNew || !targetPath.empty())
        refusal = Outcome::None;
}

ReceivedPart AttachmentSets::PartInHand(const PartEnd& end) const
{
    return {place.begin, place.size, end.checksum, static_cast<std::uint32_t>(place.total), end.wholeChecksum,
        end.isProven};
}

std::vector<AttachmentSets::Set> AttachmentSets::SetsOfKey() const
{
    std::vector<Set> found;
    for (int number = 0; number < mostSetsOfOneName; ++number) {
        const std::string path = key + std::to_string(number);
        auto journal = ReadJournal(path);
        if (journal && journal->Name() == name && journal->Size() == place.wholeSize)
            found.push_back({path, std::move(*journal)});
    }
    return found;
}

// Where a new set of the key can lie: in place of what is none, or of the oldest. "" if directories stand everywhere.
std::string AttachmentSets::NewPath()
{
    std::string oldest;
    std::time_t oldestAddition = std::numeric_limits<std::time_t>::max();
    for (int number = 0; number < mostSetsOfOneName; ++number) {
        std::string path = key + std::to_string(number);
        if (!ReadJournal(path)) {
            Remove(path);
            struct stat status = {};
            if (lstat(FileOf(path, dataEnding).c_str(), &status) != 0
                && lstat(FileOf(path, journalEnding).c_str(), &status) != 0)
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

// The file is made with the first bytes and not before, so that a body full of broken parts costs nothing.
bool AttachmentSets::OpenTarget()
{
    if (targetPath.empty()) {
        const std::string path = FileOf(folder, scratchName);
        target = MakeAnew(path);
        (void)DeleteFile(path); // it goes when it is closed
    } else {
        const std::string path = FileOf(targetPath, dataEnding);
        target = targetIsNew ? MakeAnew(path) : OpenPlain(path, O_RDWR);
    }
    return target.IsOpen();
}

void AttachmentSets::Write(std::string_view bytes)
{
    if (refusal != Outcome::None)
        return;
    if (bytes.size() > place.size - written)
        refusal = Outcome::Damaged; // and nothing is written beyond its place
    else if ((!target.IsOpen() && !OpenTarget()) || !WriteAt(target, bytes, TargetBegin() + written))
        refusal = Outcome::NotWritten;
    written += bytes.size();
}

void AttachmentSets::Drop()
{
    if (target.IsOpen() && targetIsNew) {
        (void)DeleteFile(FileOf(targetPath, dataEnding));
    } else if (target.IsOpen() && !targetPath.empty()) {
        Punch(target, place.begin, place.size);
        NoteSet(sets.front());
    }
    target = Descriptor();
    targetPath.clear();
    targetIsNew = false;
    sets.clear();
    written = 0;
    Leave();
}

Outcome AttachmentSets::Keep(const PartEnd& end, const GiveName& giveName)
{
    Outcome outcome = refusal;
    if (outcome == Outcome::None && written != place.size)
        outcome = Outcome::Damaged;
    std::string path;
    if (outcome == Outcome::None)
        outcome = Take(PartInHand(end), path);
    if (outcome == Outcome::Part && !path.empty())
        outcome = Finish(path, giveName);
    Drop();
    return outcome;
}

// Finds the set of a sound part and adds it there. `path` becomes that of the set which now has it.
Outcome AttachmentSets::Take(const ReceivedPart& part, std::string& path)
{
    Set* certain = nullptr; // the attachment's check sum will tell
    Set* there = nullptr;
    std::vector<Set*> possible;
    for (Set& set : sets) {
        if (!set.journal.Admits(part))
            continue;
        if (set.journal.Holds(part))
            there = &set;
        if (!set.journal.IsFree(part))
            continue;
        possible.push_back(&set);
        if (part.wholeChecksum && set.journal.WholeChecksum() == part.wholeChecksum)
            certain = &set;
    }
    if (there != nullptr && certain == nullptr) {
        path = there->path;
        return Outcome::Part;
    }
    if (possible.size() > 1 && !part.wholeChecksum)
        return Outcome::Part; // to put it into the wrong one would make a wrong file
    Set* set = possible.size() == 1 ? possible.front() : certain;
    if (set != nullptr && set->journal.Parts().size() >= mostParts)
        return Outcome::Damaged;

    const bool isNew = set == nullptr;
    Set made{isNew && !targetIsNew ? NewPath() : targetPath, SetJournal(name, place.wholeSize)};
    if (isNew)
        set = &made;
    const bool liesThere = set->path == targetPath;
    if (set->path.empty() || (!liesThere && !CopyTarget(set->path, isNew)) || !AddToJournal(*set, part, isNew))
        return Outcome::NotWritten;
    if (liesThere)
        target = Descriptor();
    NoteSet(*set);
    path = set->path;
    return Outcome::Part;
}

bool AttachmentSets::CopyTarget(const std::string& path, bool isNew) const
{
    const std::string file = FileOf(path, dataEnding);
    const Descriptor data = isNew ? MakeAnew(file) : OpenPlain(file, O_RDWR);
    std::uint64_t at = place.begin;
    const bool copied = data.IsOpen() && ReadFrom(target, TargetBegin(), place.size, [&](std::string_view bytes) {
        const bool wrote = WriteAt(data, bytes, at);
        at += bytes.size();
        return wrote;
    });
    if (!copied && isNew)
        (void)DeleteFile(file);
    else if (!copied && data.IsOpen())
        Punch(data, place.begin, place.size);
    return copied;
}

bool AttachmentSets::AddToJournal(Set& set, const ReceivedPart& part, bool isNew) const
{
    const std::string path = FileOf(set.path, journalEnding);
    const std::size_t end = set.journal.Length();
    set.journal.Add(part);
    if (isNew) {
        Descriptor file = MakeAnew(path);
        if (file.IsOpen() && !file.Write(set.journal.Bytes()) && !file.Close())
            return true;
        (void)DeleteFile(path);
        (void)DeleteFile(FileOf(set.path, dataEnding));
        return false;
    }
    Descriptor file = OpenPlain(path, O_WRONLY);
    // Behind the last whole record there may be one whose writing broke off.
    if (!file.IsOpen() || ftruncate(file.Number(), static_cast<off_t>(end)) != 0)
        return false;
    if (WriteAt(file, SetJournal::Record(part), end) && !file.Close())
        return true;
    (void)!truncate(path.c_str(), static_cast<off_t>(end)); // half a record would not be read either
    return false;
}

// The whole.

// Reads the attachment once more and gives it its name. Part if it is not whole.
Outcome AttachmentSets::Finish(const std::string& path, const GiveName& giveName)
{
    auto journal = ReadJournal(path);
    const std::string dataPath = FileOf(path, dataEnding);
    Descriptor data = OpenPlain(dataPath, O_RDWR);
    if (!journal || !journal->IsWhole() || !data.IsOpen())
        return Outcome::Part;
    std::uint32_t wholeChecksum = 0;
    const auto isRight = [&](const ReceivedPart& part) {
        std::uint32_t checksum = 0;
        return ReadFrom(data, part.begin, part.size, [&](std::string_view bytes) {
            checksum = Checksum(checksum, bytes);
            wholeChecksum = Checksum(wholeChecksum, bytes);
            return true;
        }) && checksum == part.checksum;
    };
    std::vector<ReceivedPart> wrong;
    std::copy_if(journal->Parts().begin(), journal->Parts().end(), std::back_inserter(wrong),
        [&](const ReceivedPart& part) { return !isRight(part); });
    if (!wrong.empty()) {
        ForgetParts({path, *journal}, data, wrong);
        return Outcome::Part;
    }
    if (journal->WholeChecksum().value_or(wholeChecksum) != wholeChecksum) {
        // Those that proved themselves stay; if all of them did, what they are said to make is not true.
        std::copy_if(journal->Parts().begin(), journal->Parts().end(), std::back_inserter(wrong),
            [](const ReceivedPart& part) { return !part.isProven; });
        ForgetParts({path, *journal}, data, wrong.empty() ? journal->Parts() : wrong);
        return Outcome::Damaged;
    }
    if (ftruncate(data.Number(), static_cast<off_t>(journal->Size())) != 0)
        return Outcome::NotWritten;
    UnnamedFile file(dataPath, std::move(data));
    if (!giveName(journal->Name(), file))
        return Outcome::NotWritten;
    Remove(path);
    return Outcome::Stored;
}

void AttachmentSets::ForgetParts(Set set, const Descriptor& data, const std::vector<ReceivedPart>& parts)
{
    for (const ReceivedPart& part : parts) {
        set.journal.Forget(part);
        Punch(data, part.begin, part.size);
    }
    if (set.journal.Parts().empty() || ReplaceFile(FileOf(set.path, journalEnding), {set.journal.Bytes()}))
        Remove(set.path); // without its journal it is of no use
    else
        NoteSet(set);
}

void AttachmentSets::FinishWhole(const std::string& destination, const GiveName& giveName)
{
    if (whole.empty() || !Enter(destination, Missing::Leave))
        return;
    for (const std::string& path : std::exchange(whole, {}))
        (void)Finish(path, giveName); // what is not finished now is met again
    Leave();
}
