#pragma once

#include "base/UnnamedFile.h"
#include "decoder/AttachmentSets.h"
#include "decoder/AttachmentSink.h"

#include <string>
#include <string_view>
#include <vector>

// Writes attachments into a directory, under names that no other file there has. An attachment is written to a hidden
// file beside its place and takes its name when it is whole and its bytes are on the disk: until then nothing of it is
// to be seen, and no existing file is ever written to, replaced or followed as a link. An existing file with the same
// content is not stored again. An attachment that is spread over several articles waits in `sets` until it is whole.
class AttachmentStore final : public AttachmentSink {
public:
    // Beside the file `bodyFile`, which is no attachment, whatever its content. A name that begins with a reserved one,
    // in whatever case, gets a "_" before it.
    AttachmentStore(
        std::string bodyFile, const std::vector<std::string>& reservedNames, AttachmentSets& attachmentSets);

    // The bare names of the kept attachments, one for each Keep that succeeded.
    const std::vector<std::string>& Names() const { return names; }

    // Those of them whose file was there before.
    const std::vector<std::string>& FoundNames() const { return foundNames; }

    void Open(std::string_view name, const std::optional<AttachmentPart>& part) override;
    void Write(std::string_view bytes) override;
    [[nodiscard]] Outcome Keep(const std::optional<AttachmentPart>& part) override;
    void Drop() override;

    // Stores what a program that was killed has left whole.
    void FinishWholeSets();

private:
    std::string NameFor(std::string_view name) const;
    bool KeepAs(const std::string& name);
    AttachmentSets::GiveName NameGiver();
    bool TakeName(const std::string& safeName);
    std::size_t FreeNumber(const std::string& safeName) const;
    bool IsStoredAs(const std::string& path) const;

    std::string directory;
    std::string bodyPath;
    const std::vector<std::string>& reservedNames;
    AttachmentSets& sets;
    std::vector<std::string> names;
    std::vector<std::string> foundNames;
    std::size_t parts = 0; // of this body

    bool isPart = false; // the one in hand
    std::string wantedName;
    UnnamedFile file;
    bool failed = false;
};
