#include "decoder/AttachmentSets.h"

#include "base/Files.h"

#include <libdeflate.h>

#include <algorithm>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <sys/stat.h>
#include <utility>

// The data come before the record that tells of them, and the journal stays until the name is given: a kill at any
// moment leaves a set that has the part, or has not. Whether the disk has kept all of it when the power went shows when
// the whole is read once more, at the end.

namespace {

constexpr std::size_t blockSize = 256 * 1024;

// Of a part that has to be looked at as a whole first. Most parts are smaller.
constexpr std::size_t mostBytesInMemory = 1024 * 1024;

// Where the next reading or writing begins.
void GoTo(const Descriptor& file, std::uint64_t offset)
{
    (void)lseek(file.Number(), static_cast<off_t>(offset), SEEK_SET);
}

enum class Reading { Done, Short, Failed };

// Hands out so many bytes of a file, block by block. Short if there are less, or if `take` has enough.
template <class Take>
[[nodiscard]] Reading ReadFrom(const Descriptor& file, std::uint64_t offset, std::uint64_t size, const Take& take)
{
    const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
    GoTo(file, offset);
    while (size != 0) {
        const ssize_t count
            = file.Read(block.get(), static_cast<std::size_t>(std::min<std::uint64_t>(size, blockSize)));
        if (count < 0)
            return Reading::Failed;
        if (count == 0 || !take(std::string_view(block.get(), static_cast<std::size_t>(count))))
            return Reading::Short;
        size -= static_cast<std::size_t>(count);
    }
    return Reading::Done;
}

// Gives back what bytes that do not count take on the disk, where it can do that.
void Punch(const Descriptor& file, std::uint64_t begin, std::uint64_t size)
{
    (void)fallocate(
        file.Number(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(begin), static_cast<off_t>(size));
}

// Of a new set, which has this part.
[[nodiscard]] bool WriteJournal(KeptSet& set, const AttachmentPart& part)
{
    set.journal.Add(part);
    const std::string path = SetFolder::JournalOf(set.path);
    Descriptor file = SetFolder::MakeAnew(path);
    const bool isMade = file.IsOpen();
    if (isMade && !file.Write(set.journal.Bytes()) && !file.Close())
        return true;
    if (isMade)
        (void)DeleteFile(path);
    (void)DeleteFile(SetFolder::DataOf(set.path));
    return false;
}

[[nodiscard]] bool AppendToJournal(KeptSet& set, const AttachmentPart& part)
{
    const std::string path = SetFolder::JournalOf(set.path);
    const std::size_t end = set.journal.Length();
    Descriptor file = SetFolder::Open(path, O_WRONLY | O_APPEND);
    struct stat status = {};
    // On a disk that knows no locks another program may have added to it.
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || status.st_size > set.journalSize)
        return false;
    // Behind the last whole record there may be one whose writing broke off.
    if (ftruncate(file.Number(), static_cast<off_t>(end)) != 0)
        return false;
    if (!file.Write(SetJournal::Record(part)) && !file.Close()) {
        set.journal.Add(part);
        return true;
    }
    (void)!truncate(path.c_str(), static_cast<off_t>(end)); // half a record would not be read either
    return false;
}

std::uint32_t Checksum(std::uint32_t before, std::string_view bytes)
{
    return static_cast<std::uint32_t>(libdeflate_crc32(before, bytes.data(), bytes.size()));
}

}

void AttachmentSets::Open(const std::string& destination, std::string_view newName, const AttachmentPart& newPart)
{
    Drop();
    name = newName;
    part = newPart;
    refusal = Outcome::Damaged;
    if (part.wholeSize > largestSpreadAttachment || part.total > mostParts || name.size() > longestSpreadName)
        return;
    refusal = Outcome::NotWritten;
    if (!Folder.Enter(destination, SetFolder::Missing::Make))
        return;
    key = Folder.KeyOf(name, part.wholeSize);
    sets = Folder.SetsOf(name, part.wholeSize);
    // Nearly always it is clear where the bytes belong before the first one is there.
    targetIsNew = sets.empty();
    if (targetIsNew)
        targetPath = Folder.NewPath(key);
    else if (sets.size() == 1 && sets.front().journal.Admits(part) && sets.front().journal.IsFree(part))
        targetPath = sets.front().path;
    if (!targetIsNew || !targetPath.empty())
        refusal = Outcome::None;
}

// The file is made with the first bytes and not before, so that a body full of broken parts costs nothing.
bool AttachmentSets::OpenTarget()
{
    if (targetPath.empty()) {
        target = Folder.MakeScratch();
        return target.IsOpen() && !target.Write(std::exchange(inMemory, {}));
    }
    const std::string path = SetFolder::DataOf(targetPath);
    target = targetIsNew ? SetFolder::MakeAnew(path) : SetFolder::Open(path, O_RDWR);
    GoTo(target, part.begin);
    return target.IsOpen();
}

void AttachmentSets::Write(std::string_view bytes)
{
    if (refusal != Outcome::None)
        return;
    if (bytes.size() > part.size - written)
        refusal = Outcome::Damaged; // and nothing is written beyond its place
    else if (targetPath.empty() && written + bytes.size() <= mostBytesInMemory)
        inMemory += bytes;
    else if (!Folder.MakeRoom(written + bytes.size(), targetIsNew, key))
        refusal = Outcome::Damaged;
    else if ((!target.IsOpen() && !OpenTarget()) || target.Write(bytes))
        refusal = Outcome::NotWritten;
    written += bytes.size();
}

void AttachmentSets::Drop()
{
    if (target.IsOpen() && targetIsNew) {
        (void)DeleteFile(SetFolder::DataOf(targetPath));
    } else if (target.IsOpen() && !targetPath.empty()) {
        Punch(target, part.begin, part.size);
        Folder.Note(sets.front());
    }
    target = Descriptor();
    targetPath.clear();
    targetIsNew = false;
    inMemory = {};
    sets.clear();
    written = 0;
    Folder.Leave();
}

Outcome AttachmentSets::Keep(const AttachmentPart& whole, const GiveName& giveName)
{
    part = whole;
    Outcome outcome = refusal;
    if (outcome == Outcome::None && written != part.size)
        outcome = Outcome::Damaged;
    std::vector<std::string> paths;
    if (outcome == Outcome::None)
        outcome = Take(paths);
    for (const std::string& path : paths) {
        const Outcome finished = Finish(path, giveName);
        const bool isStored = outcome == Outcome::Stored || finished == Outcome::Stored;
        outcome = isStored ? Outcome::Stored : std::min(outcome, finished);
    }
    Drop();
    return outcome;
}

// Finds the sets of a sound part and adds it there. `paths` become those of the sets which now have it.
Outcome AttachmentSets::Take(std::vector<std::string>& paths)
{
    std::vector<KeptSet*> possible;
    std::vector<KeptSet*> safe; // the attachment's check sum will tell whether it was theirs
    for (KeptSet& set : sets) {
        if (!set.journal.Admits(part))
            continue;
        if (set.journal.Holds(part))
            paths.push_back(set.path);
        if (!set.journal.IsFree(part))
            continue;
        possible.push_back(&set);
        if (set.journal.WholeChecksum())
            safe.push_back(&set);
    }
    if (safe.empty() && !paths.empty())
        return Outcome::Part;
    if (safe.empty() && possible.size() > 1 && !part.wholeChecksum)
        return Outcome::Part; // to put it into the wrong one would make a wrong file
    KeptSet made{{}, SetJournal(name, part.wholeSize), 0};
    const bool isNew = safe.empty() && possible.size() != 1;
    if (isNew)
        made.path = targetIsNew ? targetPath : Folder.NewPath(key);
    Outcome outcome = Outcome::Part;
    for (KeptSet* set : isNew ? std::vector{&made} : safe.empty() ? possible : safe) {
        const Outcome added = AddTo(*set, isNew);
        outcome = std::min(outcome, added);
        if (added == Outcome::Part)
            paths.push_back(set->path);
    }
    return outcome;
}

Outcome AttachmentSets::AddTo(KeptSet& set, bool isNew)
{
    if (set.journal.Parts().size() >= mostParts)
        return Outcome::Damaged;
    const bool liesThere = set.path == targetPath;
    if (!liesThere && !Folder.MakeRoom(part.size, isNew, key))
        return Outcome::Damaged;
    if (set.path.empty() || (!liesThere && !CopyTarget(set.path, isNew))
        || !(isNew ? WriteJournal : AppendToJournal)(set, part))
        return Outcome::NotWritten;
    if (liesThere) {
        // The disk has time for it while the next parts come, and the wait at the end is short.
        (void)sync_file_range(
            target.Number(), static_cast<off_t>(part.begin), static_cast<off_t>(part.size), SYNC_FILE_RANGE_WRITE);
        target = Descriptor();
    }
    Folder.Note(set);
    return Outcome::Part;
}

bool AttachmentSets::CopyTarget(const std::string& path, bool isNew) const
{
    const std::string file = SetFolder::DataOf(path);
    const Descriptor data = isNew ? SetFolder::MakeAnew(file) : SetFolder::Open(file, O_RDWR);
    GoTo(data, part.begin);
    const auto write = [&](std::string_view bytes) { return !data.Write(bytes); };
    const std::uint64_t from = targetPath.empty() ? 0 : part.begin;
    const bool copied = data.IsOpen()
        && (target.IsOpen() ? ReadFrom(target, from, part.size, write) == Reading::Done : write(inMemory));
    if (!copied && data.IsOpen() && isNew)
        (void)DeleteFile(file);
    else if (!copied && data.IsOpen())
        Punch(data, part.begin, part.size);
    return copied;
}

// The whole.

// Reads the attachment once more and gives it its name. Part if it is not whole, NotWritten if that cannot be told now.
Outcome AttachmentSets::Finish(const std::string& path, const GiveName& giveName)
{
    const auto notNow = [&] {
        Folder.FinishLater(path);
        return Outcome::NotWritten;
    };
    bool isUnclear = false;
    const auto set = SetFolder::Read(path, isUnclear);
    if (!set || !set->journal.IsWhole())
        return isUnclear ? notNow() : Outcome::Part;
    const SetJournal& journal = set->journal;
    const std::string dataPath = SetFolder::DataOf(path);
    Descriptor data = SetFolder::Open(dataPath, O_RDWR);
    if (!data.IsOpen())
        return notNow();
    const auto toldChecksum = journal.WholeChecksum();
    std::uint32_t wholeChecksum = 0;
    std::vector<AttachmentPart> wrong;
    for (const AttachmentPart& kept : journal.Parts()) {
        std::uint32_t checksum = 0;
        const Reading reading = ReadFrom(data, kept.begin, kept.size, [&](std::string_view bytes) {
            checksum = Checksum(checksum, bytes);
            if (toldChecksum)
                wholeChecksum = Checksum(wholeChecksum, bytes);
            return true;
        });
        if (reading == Reading::Failed)
            return notNow();
        if (reading == Reading::Short || checksum != kept.checksum)
            wrong.push_back(kept);
    }
    if (!wrong.empty()) {
        ForgetParts(*set, data, wrong);
        return Outcome::Part;
    }
    if (toldChecksum.value_or(wholeChecksum) != wholeChecksum) {
        const auto find = [&](const auto& isDoubtful) {
            if (wrong.empty())
                std::copy_if(journal.Parts().begin(), journal.Parts().end(), std::back_inserter(wrong), isDoubtful);
        };
        // Those that proved themselves stay. If all of them did, some may be of another posting, and those that tell
        // this check sum stay; if all tell it, what they are said to make is not true.
        find([](const AttachmentPart& kept) { return !kept.isProven; });
        find([](const AttachmentPart& kept) { return !kept.wholeChecksum; });
        ForgetParts(*set, data, wrong.empty() ? journal.Parts() : wrong);
        return Outcome::Damaged;
    }
    if (ftruncate(data.Number(), static_cast<off_t>(journal.Size())) != 0)
        return notNow();
    UnnamedFile file(dataPath, std::move(data));
    if (!giveName(journal.Name(), file))
        return notNow();
    Folder.Remove(path);
    // It is not waited for a second time beside a part of it that was false.
    for (const KeptSet& other : sets) {
        if (toldChecksum && other.journal.WholeChecksum() == toldChecksum)
            Folder.Remove(other.path);
    }
    return Outcome::Stored;
}

void AttachmentSets::ForgetParts(KeptSet set, const Descriptor& data, const std::vector<AttachmentPart>& parts)
{
    for (const AttachmentPart& forgotten : parts)
        set.journal.Forget(forgotten);
    if (set.journal.Parts().empty()) {
        Folder.Remove(set.path);
        return;
    }
    if (!Folder.ReplaceJournal(set))
        return; // the old one stands, and so does what it tells of
    for (const AttachmentPart& forgotten : parts)
        Punch(data, forgotten.begin, forgotten.size);
    Folder.Note(set);
}

void AttachmentSets::FinishWhole(const std::string& destination, const GiveName& giveName)
{
    if (!Folder.HasWhole(destination) || !Folder.Enter(destination, SetFolder::Missing::Leave))
        return;
    for (const std::string& path : Folder.TakeWhole())
        (void)Finish(path, giveName);
    Folder.Leave();
}
