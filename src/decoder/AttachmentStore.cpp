#include "decoder/AttachmentStore.h"

#include "base/Files.h"
#include "base/Text.h"
#include "decoder/AttachmentName.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace {

// So many files of one name in a directory are looked at one by one. If there are more, the end of their numbers is
// looked for in steps.
constexpr std::size_t fewFilesOfOneName = 100;
constexpr std::size_t mostFilesOfOneName = 1 << 24;

constexpr std::size_t mostPartsOfOneBody = 100;

bool SameBytes(const Descriptor& one, const Descriptor& other)
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

}

AttachmentStore::AttachmentStore(
    std::string bodyFile, const std::vector<std::string>& newReservedNames, AttachmentSets& attachmentSets)
    : directory(DirectoryOf(bodyFile))
    , bodyPath(std::move(bodyFile))
    , reservedNames(newReservedNames)
    , sets(attachmentSets)
{
}

std::string AttachmentStore::NameFor(std::string_view name) const
{
    std::string safeName = SafeFileName(name);
    const auto beginsAlike
        = [&safeName](const std::string& reserved) { return SameText(safeName.substr(0, reserved.size()), reserved); };
    if (std::any_of(reservedNames.begin(), reservedNames.end(), beginsAlike))
        safeName = NumberedFileName("_" + safeName, 1);
    return safeName;
}

// Each part is for a set that has to be looked for, and a body can be made of nothing but tiny ones.
void AttachmentStore::Open(std::string_view name, const std::optional<AttachmentPart>& part)
{
    Drop();
    if (!part) {
        wantedName = NameFor(name);
        return;
    }
    isPart = ++parts <= mostPartsOfOneBody;
    failed = !isPart;
    if (isPart)
        sets.Open(directory, name, *part);
}

// The file is made with the first bytes and not before, so that a body full of broken attachments costs nothing.
void AttachmentStore::Write(std::string_view bytes)
{
    if (isPart)
        return sets.Write(bytes);
    if (failed)
        return;
    if (!file.IsOpen())
        file = UnnamedFile(directory);
    if (!file.IsOpen() || file.Write(bytes)) {
        Drop();
        failed = true;
    }
}

Outcome AttachmentStore::Keep(const std::optional<AttachmentPart>& part)
{
    Outcome outcome = Outcome::Damaged;
    if (part && isPart) {
        outcome = sets.Keep(*part, NameGiver());
    } else if (!part) {
        Write({}); // an attachment of no bytes is a file too
        outcome = !failed && KeepAs(wantedName) ? Outcome::Stored : Outcome::NotWritten;
    }
    Drop();
    return outcome;
}

bool AttachmentStore::KeepAs(const std::string& name)
{
    return !file.Finish() && (TakeName(name) || TakeName(PortableFileName(name)));
}

void AttachmentStore::FinishWholeSets() { sets.FinishWhole(directory, NameGiver()); }

// A file that can have no name now stays with its set.
AttachmentSets::GiveName AttachmentStore::NameGiver()
{
    return [this](const std::string& name, UnnamedFile& whole) {
        file = std::move(whole);
        const bool kept = KeepAs(NameFor(name));
        if (!kept)
            file.Leave();
        file = UnnamedFile();
        return kept;
    };
}

// False if the file system does not take such a name.
bool AttachmentStore::TakeName(const std::string& safeName)
{
    for (std::size_t number = 1; number < mostFilesOfOneName; ++number) {
        if (number == fewFilesOfOneName)
            number = FreeNumber(safeName);
        const std::string name = NumberedFileName(safeName, number);
        const std::error_code error = file.TakeName(directory + name);
        if (error && error != std::errc::file_exists)
            return false;
        if (error && !IsStoredAs(directory + name))
            continue;
        if (error && std::find(names.begin(), names.end(), name) == names.end())
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
        struct stat status = {};
        return lstat((directory + NumberedFileName(safeName, number)).c_str(), &status) == 0;
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
    // Looked at before it is opened, since opening a device or a pipe may have effects.
    if (lstat(file.Path().c_str(), &ours) != 0 || lstat(path.c_str(), &theirs) != 0 || !S_ISREG(theirs.st_mode)
        || ours.st_size != theirs.st_size || SameFile(path, bodyPath))
        return false;
    const Descriptor other(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return SameBytes(file.FromStart(), other);
}

void AttachmentStore::Drop()
{
    if (isPart)
        sets.Drop();
    isPart = false;
    file = UnnamedFile();
    failed = false;
}
