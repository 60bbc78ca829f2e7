#pragma once

#include "decoder/AttachmentSink.h"

#include <string>
#include <string_view>
#include <vector>

// Writes attachments into a directory, under names that no other file there has. An attachment is written to a hidden
// file beside its place and takes its name when it is whole and its bytes are on the disk: until then nothing of it is
// to be seen, and no existing file is ever written to, replaced or followed as a link. An existing file with the same
// content is not stored again.
class AttachmentStore final : public AttachmentSink {
public:
    // `storeDirectory` is empty or ends in a "/". The file `bodyFile` is no attachment, whatever its content.
    AttachmentStore(std::string storeDirectory, std::string bodyFile);
    ~AttachmentStore() override;
    AttachmentStore(const AttachmentStore&) = delete;
    AttachmentStore& operator=(const AttachmentStore&) = delete;

    // The bare names of the kept attachments, one for each Keep that succeeded.
    const std::vector<std::string>& Names() const { return names; }

    // Those of them whose file was there before.
    const std::vector<std::string>& FoundNames() const { return foundNames; }

    void Open(std::string_view name) override;
    void Write(std::string_view bytes) override;
    [[nodiscard]] bool Keep() override;
    void Drop() override;

private:
    bool OpenHiddenFile();
    bool TakeName(const std::string& safeName);
    std::size_t FreeNumber(const std::string& safeName) const;
    bool IsStoredAs(const std::string& path) const;

    std::string directory;
    std::string bodyPath;
    std::vector<std::string> names;
    std::vector<std::string> foundNames;

    std::string wantedName;
    std::string hiddenPath; // empty while there is no hidden file
    int hidden = -1; // locked, see flock(2), from its start
    int holder = -1; // holds the lock when that is closed
    bool failed = false;
};

// Removes from a directory the hidden files of attachments that programs had in hand when they died: those that nobody
// holds a lock on. Where the disk knows no locks they all stay.
void RemoveRemains(const std::string& directory);
