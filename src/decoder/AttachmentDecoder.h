#pragma once

#include "decoder/AttachmentSets.h"

#include <string>
#include <vector>

// Decodes the attachments of one article body into files. The body lies in a file, as it came over the wire with its
// dots still doubled, and the attachments are put beside it. Which kinds are read is told in Uuencode.cpp, Yenc.cpp,
// Base64.cpp and MimePart.cpp. Of an attachment that is not whole, nothing is stored; parts of yEnc wait in a hidden
// folder beside the body until the others are there (AttachmentSets).
class AttachmentDecoder {
public:
    // Decodes at once. The file is not changed, and not held open afterwards. One that cannot be read counts as empty.
    void SetDecodeFilename(const std::string& path);

    // Attachments that were whole and could get no name are tried once more, with the next body.
    void BeginSearch() { sets.Folder.TryAgain(); }

    // The attachments that wait for parts in this directory, which ends in a "/". Its folder is looked through at the
    // first time only.
    WaitingSets Waiting(const std::string& directory) { return sets.Folder.Waiting(directory); }

    // The number of attachments stored, if any were, even if others were not. Otherwise the worst of what was met, in
    // this order: -3 an attachment could not be written, -2 damaged, -1 only part of one, 0 no attachment.
    // A part that makes an attachment whole counts as that attachment.
    // An attachment that an existing file already holds counts as stored.
    int DecodeStatus() const { return status; }

    // The bare name of the first stored attachment, in UTF-8, empty if there is none. Stays until the next decode.
    std::string ImageFilename() const { return storedNames.empty() ? std::string() : storedNames.front(); }

    // The bare names of all of them, in their order in the body. Equal attachments of one name share one file.
    const std::vector<std::string>& StoredNames() const { return storedNames; }

    // Those of them whose file had been there before, with the same content.
    const std::vector<std::string>& FoundNames() const { return foundNames; }

    // How the names of the program's own files begin, some of which may not be there yet: no attachment takes such a
    // name.
    std::vector<std::string> ReservedNames;

private:
    AttachmentSets sets;
    int status = 0;
    std::vector<std::string> storedNames;
    std::vector<std::string> foundNames;
};
