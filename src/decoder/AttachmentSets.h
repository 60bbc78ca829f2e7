#pragma once

#include "base/UnnamedFile.h"
#include "decoder/AttachmentSink.h"
#include "decoder/SetFolder.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The parts of attachments that are spread over several articles, kept on the disk until they are whole.
//
// A part belongs to an attachment of its name and size, and of its total and the attachment's check sum where they are
// told. Where the parts of a set say otherwise, or have other bytes at its place, it begins a set of its own. A part
// that fits several sets goes into each whose attachment's check sum is known, by which a wrong one shows at the end.
// If none is known, and the part does not tell it either, the part is not kept.
class AttachmentSets {
public:
    // Takes the file of a whole attachment and gives it its final name, or removes it if it has an equal there. False
    // if that is not possible now: the file then stays where it is.
    using GiveName = std::function<bool(const std::string& name, UnnamedFile& file)>;

    // A part begins. `destination` ends in a "/".
    void Open(const std::string& destination, std::string_view name, const AttachmentPart& newPart);

    void Write(std::string_view bytes);

    // The part is sound, and now its check sums are known, too. Stored if it made its attachment whole, with a final
    // name; otherwise as a sink tells it.
    [[nodiscard]] Outcome Keep(const AttachmentPart& whole, const GiveName& giveName);

    // The part is not taken.
    void Drop();

    // Finishes what was found whole: a program that was killed can leave such a set.
    void FinishWhole(const std::string& destination, const GiveName& giveName);

    // Where they are kept. To be asked what waits there, and told when a search begins.
    SetFolder Folder;

private:
    bool OpenTarget();
    Outcome Take(std::vector<std::string>& paths);
    Outcome AddTo(KeptSet& set, bool isNew);
    bool CopyTarget(const std::string& path, bool isNew) const;

    Outcome Finish(const std::string& path, const GiveName& giveName);
    void ForgetParts(KeptSet set, const Descriptor& data, const std::vector<AttachmentPart>& parts);

    // The part in hand.
    Outcome refusal = Outcome::Damaged; // why it is not taken, None if it is
    std::string key; // of the paths of its sets
    std::string name;
    AttachmentPart part;
    std::vector<KeptSet> sets; // of its name and size
    std::string targetPath; // the set whose data file takes the bytes, "" if that is not settled yet
    bool targetIsNew = false;
    Descriptor target; // opened with the first bytes that do not stay in memory
    std::string inMemory;
    std::uint64_t written = 0;
};
