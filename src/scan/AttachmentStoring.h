#pragma once

#include "base/Files.h"
#include "pictures/PreviewStrip.h"
#include "session/NewsSession.h"

#include <cstdint>
#include <string>
#include <vector>

// The article that a search has in hand.
struct ArticleInHand {
    std::int32_t number;
    std::int32_t lastInGroup;

    // Such as "Getting 7002 of 7055 -- alt.kites".
    std::string Caption(std::string_view doing, const std::string& group) const;
};

enum class AfterStoring { GoOn, GroupLimitReached };

// The way from a body to a stored file: through a temporary file and the decoder into the destination directory or the
// group's sub directory. A step that fails is skipped; no failure is shown, and none ends the run.
class AttachmentStoring {
public:
    // `lock` notes the body that is in hand, so that it can be removed after a kill.
    AttachmentStoring(
        frmTamarack& mainForm, NewsSession& session, PreviewStrip& previews, Viewer& viewer, LockFile& lock);

    // A search begins: what programs that were killed have left in the destination goes.
    void Begin();

    // Decodes and stores what the body holds, shows and counts it, and tests the limits. The limit of the whole run
    // sets StopFlag.
    AfterStoring Store(const ArticleInHand& article, const std::string& body);

    // The program ends, perhaps in the middle of Store: what is decoded goes to its place, and the body goes.
    void End();

    // Where the program's own files lie. They are no group's directories, since what is stored there replaces files.
    std::vector<std::string> OwnDirectories;

    std::int32_t TotalCount = 0; // attachments stored in this run
    std::int32_t GroupCount = 0; // and from the current group

private:
    void Decode(const ArticleInHand& article, const std::string& body);
    void MoveToItsPlace();
    void DeleteTemporaryFile();
    std::string MoveAside(const std::string& name) const;
    bool IsNew(const std::string& name) const;
    bool MakeGroupDirectory(const std::string& directory) const;
    void Show();

    frmTamarack& MainForm;
    NewsSession& Session;
    PreviewStrip& previews;
    Viewer& viewer;
    LockFile& lock;

    std::string destination; // for the article in hand
    std::string temporaryFile; // its body, empty while there is none
    std::string imageFile; // the full path of its stored attachment, of the first if there are several
    bool hasItsPlace = true; // the attachment, by now
};
