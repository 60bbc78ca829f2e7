#pragma once

#include "base/Descriptor.h"
#include "decoder/SetJournal.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
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

// What does not come within days does not come at all.
constexpr auto longestWaitOfSets = std::chrono::hours(30 * 24);

// What is still to come. Of what is whole, and could get no name yet, nothing is.
struct WaitingSets {
    std::uint64_t attachments = 0;
    std::uint64_t missing = 0; // articles
    std::uint64_t articles = 0; // the missing ones and those that came

    bool operator==(const WaitingSets&) const = default;
};

// The received parts of one attachment.
struct KeptSet {
    std::string path; // of its two files, without their endings
    SetJournal journal;
    std::int64_t journalSize = 0; // of its file, in bytes, when it was read
};

// The hidden folder of a destination in which parts wait for the others. In it lie a lock and two files for each set,
// "0123456789abcdef-0.data" and "0123456789abcdef-0.journal". The digits are made from name and size of the attachment,
// so that a part finds its sets by opening few files, however many there are; the number tells sets of one name and
// size apart. The disk is all that tells what is there: it may have been filled by a program that was killed, and
// another program may use the folder, too.
class SetFolder {
public:
    enum class Missing { Make, Leave };
    enum class Busy { Wait, GiveUp };

    // Another program has the folder while a part is decoded, or a whole attachment is read. One that has stopped there
    // must not stop this one, and not once for each article.
    std::chrono::milliseconds LongestWait{10'000};

    // Takes the folder in hand, which another program may have for a while: it is waited for so long at most, and not
    // at all when that was in vain the last time. False if it cannot be had. `destination` ends in a "/".
    bool Enter(const std::string& destination, Missing missing, Busy busy = Busy::Wait);

    // The folder goes with its last set.
    void Leave();

    // What this program has seen so far; all there is when it is first asked.
    WaitingSets Waiting(const std::string& destination);

    // All that follows is for who has it in hand.

    // How the paths of the sets of such an attachment begin: all but the number.
    std::string KeyOf(std::string_view name, std::uint64_t size) const;

    std::vector<KeptSet> SetsOf(std::string_view name, std::uint64_t size) const;

    // The path of a new set: in place of what is none, or of the oldest of the key. "" if there is only what cannot be
    // removed or read. On a disk that knows no locks only one where nothing stands.
    std::string NewPath(const std::string& key);

    // Removes the oldest sets, but none of the key, until there is room for so many bytes, and for one more set if they
    // begin one. False if there is none.
    bool MakeRoom(std::uint64_t size, bool addsSet, const std::string& key);

    // A set has changed.
    void Note(const KeptSet& set);

    // False if that is not possible: the old one stays.
    [[nodiscard]] bool ReplaceJournal(const KeptSet& set) const;

    void Remove(const std::string& path);

    // Those that were found whole, each once: a program that was killed can leave such a set.
    bool HasWhole(const std::string& destination) const;
    std::vector<std::string> TakeWhole();

    // That is not possible now, and not to be tried for each article: at the next search.
    void FinishLater(const std::string& path) { unfinished.insert(path); }
    void TryAgain();

    // A file that goes when it is closed.
    Descriptor MakeScratch() const;

    static std::string JournalOf(std::string_view path);
    static std::string DataOf(std::string_view path);

    // Nothing for what is no set. `isUnclear` tells whether it may be one that cannot be read now, because of the disk
    // or the system: such a one must stay.
    static std::optional<KeptSet> Read(const std::string& path, bool& isUnclear);

    // None for a link, a directory or a pipe, and for a file that has another name too: what is done to it would be
    // done outside of the folder.
    static Descriptor Open(const std::string& file, int access);

    // None if something stands there.
    static Descriptor MakeAnew(const std::string& file);

    // Since 1970, by the system's clock.
    using Moment = std::chrono::nanoseconds;

private:
    struct Counted {
        WaitingSets waiting;
        std::uint64_t bytes; // on the disk
        Moment added; // when the last part came
    };

    void Forget(const std::string& newFolder);
    // Of the key in hand nothing is removed: its data may have no journal yet.
    void Count(const std::string& keyInHand = {});
    void Uncount(const std::string& path);

    std::string folder; // which was looked into last, with a "/" at its end
    Moment countedAt{}; // 0 for not yet
    std::map<std::string, Counted> counted; // by path
    WaitingSets waiting; // their sums
    std::uint64_t bytesOnDisk = 0;
    std::vector<std::string> whole; // paths
    std::set<std::string> unfinished; // paths, also of other folders

    Descriptor lock;
    bool waitedInVain = false; // the last time
    bool mayRemove = false; // nobody else has anything of it in hand
};
