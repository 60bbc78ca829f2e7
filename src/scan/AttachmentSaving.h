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
    const std::string& group;

    // Such as "Getting 7002 of 7055 -- alt.kites".
    std::string Caption(std::string_view doing) const;
};

enum class AfterSaving { GoOn, GroupLimitReached };

// The way from a body to a saved file: through a temporary file and the decoder into the destination directory or the
// group's sub directory. A step that fails is skipped; no failure is shown, and none ends the run.
class AttachmentSaving {
public:
    // `lock` notes the body that is in hand, so that it can be removed after a kill.
    AttachmentSaving(
        frmTamarack& mainForm, NewsSession& session, PreviewStrip& previews, Viewer& viewer, LockFile& lock);

    // A search begins, of which nothing is saved yet: what programs that were killed have left in the destination goes.
    void Begin();

    // Decodes and saves what the body holds, shows and counts it, and tests the limits. The limit of the whole run
    // sets StopFlag.
    AfterSaving Save(const ArticleInHand& article, const std::string& body);

    // The user's limit of files for a whole run.
    bool LimitOfRunReached() const;

    // The program ends, perhaps in the middle of Save: what is decoded goes to its place, and the body goes.
    void End();

    // Tells in a tool tip what waits in the destination for parts. To be called when that becomes another one.
    void ShowWaiting();

    // Where the program's own files lie. They are no group's directories, since what is saved there replaces files.
    std::vector<std::string> OwnDirectories;

    std::int32_t TotalCount = 0; // attachments saved in this run
    std::int32_t GroupCount = 0; // and from the current group

private:
    void Decode(const ArticleInHand& article, const std::string& body);
    void MoveToItsPlace();
    void DeleteTemporaryFile();
    std::string MoveAside(const std::string& name) const;
    bool IsNew(const std::string& name) const;
    bool MakeGroupDirectory(const std::string& directory) const;
    void Show();
    void ShowTotal();

    frmTamarack& MainForm;
    NewsSession& Session;
    PreviewStrip& previews;
    Viewer& viewer;
    LockFile& lock;

    std::string destination; // for the article in hand
    std::string temporaryFile; // its body, empty while there is none
    std::string imageFile; // the full path of its saved attachment, of the first if there are several
    bool hasItsPlace = true; // the attachment, by now
};
