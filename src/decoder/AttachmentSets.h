#pragma once

#include "base/UnnamedFile.h"
#include "decoder/AttachmentSink.h"
#include "decoder/SetJournal.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// No search leaves so many attachments unfinished that are still worth waiting for, and each is looked at when the
// folder is first used.
constexpr std::size_t mostSets = 2000;

// Sets of one name and size: postings that contradict each other. A part has to look at all of them.
constexpr int mostSetsOfOneName = 8;

// On the disk, of all sets together: four of the largest attachments, and no more of a user's disk than that.
constexpr std::uint64_t mostBytesOfSets = 4 * largestSpreadAttachment;

// What an article still brings within days, or never.
constexpr std::time_t longestWaitOfSets = 30 * std::time_t{24 * 60 * 60}; // in seconds

// What is still to come.
struct WaitingSets {
    std::uint64_t attachments = 0;
    std::uint64_t missing = 0; // articles
    std::uint64_t articles = 0; // the missing ones and those that came

    bool operator==(const WaitingSets&) const = default;
};

// The parts of attachments that are spread over several articles, kept in a hidden folder of the destination until they
// are whole. The folder is all that tells what is there: it may have been filled by a program that was killed, and
// another program may use it, too. Whoever looks into it holds its lock. Docs/formats.md shows its files.
//
// A part belongs to an attachment of its name and size, and of its total and the attachment's check sum where they are
// told. Where the parts of a set say otherwise, or have other bytes at its place, it begins a set of its own. A part
// that fits more than one set, and does not tell the attachment's check sum by which the right one would be known, is
// not kept.
class AttachmentSets {
public:
    // Takes the file of a whole attachment and gives it its final name, or removes it if it has an equal there. False
    // if that is not possible now: the file then stays where it is.
    using GiveName = std::function<bool(const std::string& name, UnnamedFile& file)>;

    // A part begins. `destination` ends in a "/".
    void Open(const std::string& destination, std::string_view name, const PartPlace& newPlace);

    void Write(std::string_view bytes);

    // The part is sound. Stored if it made its attachment whole, with a final name; otherwise as a sink tells it.
    [[nodiscard]] Outcome Keep(const PartEnd& end, const GiveName& giveName);

    // The part is not taken.
    void Drop();

    // Finishes what was found whole: a program that was killed can leave such a set.
    void FinishWhole(const std::string& destination, const GiveName& giveName);

    // Of what this program has seen there so far; all there is when it is first asked.
    WaitingSets Waiting(const std::string& destination);

private:
    struct Counted {
        std::uint64_t parts;
        std::uint64_t articles;
        std::uint64_t bytes; // on the disk
        std::time_t added; // when the last part came
    };

    struct Set {
        std::string path; // without the ending
        SetJournal journal;
    };

    enum class Missing { Make, Leave };
    bool Enter(const std::string& destination, Missing missing);
    void Leave();
    void ForgetCounted(const std::string& newFolder);
    void Count();
    void NoteSet(const Set& set);
    void Uncount(const std::string& path);
    void Remove(const std::string& path);
    bool MakeRoom(std::uint64_t size);

    ReceivedPart PartInHand(const PartEnd& end = {}) const;
    std::uint64_t TargetBegin() const { return targetPath.empty() ? 0 : place.begin; }
    std::vector<Set> SetsOfKey() const;
    std::string NewPath();
    bool OpenTarget();
    Outcome Take(const ReceivedPart& part, std::string& path);
    bool CopyTarget(const std::string& path, bool isNew) const;
    bool AddToJournal(Set& set, const ReceivedPart& part, bool isNew) const;

    Outcome Finish(const std::string& path, const GiveName& giveName);
    void ForgetParts(Set set, const Descriptor& data, const std::vector<ReceivedPart>& parts);

    // The folder that was counted last, with a "/" at its end, and what this program has seen in it.
    std::string folder;
    std::time_t countedAt = 0; // 0 for not yet
    std::map<std::string, Counted> counted; // by path
    WaitingSets waiting;
    std::uint64_t bytesOnDisk = 0;
    std::vector<std::string> whole; // paths

    Descriptor lock; // while the folder is in hand
    bool mayRemove = false; // nobody else has anything of it in hand

    // The part in hand.
    Outcome refusal = Outcome::Damaged; // why it is not taken, None if it is
    std::string key; // of its sets: their paths up to the number
    std::string name;
    PartPlace place;
    std::vector<Set> sets; // of its name and size
    std::string targetPath; // the set whose data file takes the bytes, "" for the scratch file
    bool targetIsNew = false;
    Descriptor target; // opened with the first bytes
    std::uint64_t written = 0;
};
