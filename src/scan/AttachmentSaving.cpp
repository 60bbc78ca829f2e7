#include "scan/AttachmentSaving.h"

#include "base/Characters.h"
#include "base/Text.h"
#include "base/UnnamedFile.h"
#include "decoder/AttachmentName.h"
#include "platform/Events.h"
#include "platform/Screen.h"

#include <algorithm>
#include <utility>

namespace {

// A group's name comes from a server or a file: it must not lead out of the destination, nor to what is hidden there,
// and it has to show what it is. No component of a name is empty (RFC 5536, section 3.1.4).
bool CanBeDirectoryName(std::string_view name)
{
    return !name.empty() && !name.starts_with('.') && !name.ends_with('.') && name.find("..") == std::string_view::npos
        && !name.starts_with('-') && name.find('/') == std::string_view::npos && IsVisibleThroughout(name);
}

constexpr std::string_view bodyStart = "article";
constexpr std::string_view bodyEnd = ".uue";

std::string BodyName(std::int32_t article)
{
    return std::string(bodyStart).append(std::to_string(article)).append(bodyEnd);
}

bool IsBodyName(std::string_view name)
{
    if (!name.starts_with(bodyStart) || !name.ends_with(bodyEnd))
        return false;
    name.remove_prefix(bodyStart.size());
    return name.find_first_not_of("-0123456789") == name.size() - bodyEnd.size();
}

}

std::string ArticleInHand::Caption(std::string_view doing) const
{
    std::string caption(doing);
    caption.append(std::to_string(number)).append(" of ").append(std::to_string(lastInGroup));
    return caption.append(" -- ").append(group);
}

AttachmentSaving::AttachmentSaving(
    frmTamarack& mainForm, NewsSession& session, PreviewStrip& newPreviews, Viewer& newViewer, LockFile& newLock)
    : MainForm(mainForm)
    , Session(session)
    , previews(newPreviews)
    , viewer(newViewer)
    , lock(newLock)
{
}

void AttachmentSaving::Begin()
{
    TotalCount = 0;
    RemoveRemains(MainForm.txtSelectDir.Text());
    if (const std::string left = lock.Note(); IsBodyName(BareName(left))) {
        const std::string directory = DirectoryOf(left);
        RemoveRemains(directory);
        for (const std::string& group : NamesIn(directory, EntryKind::Directory).value_or(std::vector<std::string>()))
            RemoveRemains(directory + group);
        (void)DeleteFile(left);
        lock.SetNote("");
    }
    MainForm.UU.BeginSearch();
    ShowTotal();
    ShowWaiting();
}

void AttachmentSaving::End()
{
    MoveToItsPlace();
    if (!temporaryFile.empty())
        DeleteTemporaryFile();
}

AfterSaving AttachmentSaving::Save(const ArticleInHand& article, const std::string& body)
{
    Screen::SetMousePointer(MousePointer::Hourglass);
    DoEvents();
    destination = MainForm.txtSelectDir.Text();
    temporaryFile = destination + BodyName(article.number);
    Decode(article, body);
    if (MainForm.UU.DecodeStatus() > 0) {
        MoveToItsPlace();
        Show();
        ++GroupCount;
        ++TotalCount;
        if (Val(MainForm.txtLimitPictures.Text()) <= GroupCount && MainForm.chkLimitPictures.Value() == 1) {
            DeleteTemporaryFile();
            return AfterSaving::GroupLimitReached;
        }
        if (LimitOfRunReached())
            Session.StopFlag = true;
        ShowTotal();
    }
    DeleteTemporaryFile();
    return AfterSaving::GoOn;
}

bool AttachmentSaving::LimitOfRunReached() const
{
    return Val(MainForm.txtMaxToDownload.Text()) <= TotalCount && MainForm.chkMaximumFiles.Value() == 1;
}

void AttachmentSaving::Decode(const ArticleInHand& article, const std::string& body)
{
    MainForm.SetCaption(article.Caption("Decoding "));
    lock.SetNote(temporaryFile);
    // What could not be written is for the decoder to judge.
    (void)WriteFile(temporaryFile, body, "\r\n");
    MainForm.UU.SetDecodeFilename(temporaryFile);
    hasItsPlace = MainForm.UU.DecodeStatus() <= 0;
    ShowWaiting();
    Screen::SetMousePointer(MousePointer::Default);
    MainForm.SetCaption(article.Caption("Finished decoding "));
    DoEvents();
}

void AttachmentSaving::DeleteTemporaryFile()
{
    (void)DeleteFile(temporaryFile);
    temporaryFile.clear();
    lock.SetNote("");
}

void AttachmentSaving::MoveToItsPlace()
{
    if (std::exchange(hasItsPlace, true))
        return;
    const std::string name = MainForm.UU.ImageFilename();
    imageFile = destination + name;
    if (MainForm.chkGroupSubDir.Value() != 1 || !CanBeDirectoryName(Session.CurrentGroup))
        return;
    const std::string groupDirectory = destination + Session.CurrentGroup + "/";
    const std::string aside = IsNew(Session.CurrentGroup) ? MoveAside(Session.CurrentGroup) : std::string();
    const bool made = MakeGroupDirectory(groupDirectory);
    if (!aside.empty() && (!made || MoveFile(aside, groupDirectory + Session.CurrentGroup)))
        (void)MoveFile(aside, destination + Session.CurrentGroup);
    if (!made)
        return;
    // The newest attachment replaces an older one of its name. A file that lay in the destination before stays there.
    for (const std::string& stored : MainForm.UU.StoredNames())
        (void)(IsNew(stored) ? MoveFile : CopyFile)(destination + stored, groupDirectory + stored);
    imageFile = groupDirectory + name;
}

// An attachment of the group's own name stands where the directory is to be. The name that it has for a moment is one
// that it can keep, should the program be killed. "" if there is none.
std::string AttachmentSaving::MoveAside(const std::string& name) const
{
    constexpr std::size_t mostTries = 1000;
    for (std::size_t number = 2; number < mostTries; ++number) {
        std::string aside = destination + NumberedFileName(name, number);
        if (!RenameUnlessTaken(destination + name, aside))
            return aside;
    }
    return {};
}

// Did this decode make the file?
bool AttachmentSaving::IsNew(const std::string& name) const
{
    const auto holds = [&name](const std::vector<std::string>& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return holds(MainForm.UU.StoredNames()) && !holds(MainForm.UU.FoundNames());
}

// False if the path that leads to it does not exist, or if it is none of a group's. Any other failure shows when the
// file is moved.
bool AttachmentSaving::MakeGroupDirectory(const std::string& directory) const
{
    return MakeDirectory(directory) != std::errc::no_such_file_or_directory
        && std::none_of(OwnDirectories.begin(), OwnDirectories.end(),
            [&directory](const std::string& own) { return SameFile(directory, own); });
}

void AttachmentSaving::Show()
{
    if (!viewer.ViewerAutoUpdate() && !MainForm.mnuInteractiveDownload.Checked())
        return;
    MainForm.Picture1.SetPicture({});
    MainForm.Picture1.Tag = imageFile;
    (void)MainForm.Picture1.Load(imageFile);
    if (MainForm.mnuInteractiveDownload.Checked())
        previews.ShowPic(imageFile);
    DoEvents();
    if (viewer.ViewerAutoUpdate())
        viewer.cmdViewCurrent_Click();
}

void AttachmentSaving::ShowTotal() { MainForm.StatusBar1.Panels(2).SetText("Items: " + std::to_string(TotalCount)); }

// As in "2 attachments are waiting for 37 more of 140 articles".
void AttachmentSaving::ShowWaiting()
{
    const WaitingSets waiting = MainForm.UU.Waiting(MainForm.txtSelectDir.Text());
    std::string toolTip;
    if (waiting.attachments != 0)
        toolTip = std::to_string(waiting.attachments)
            + (waiting.attachments == 1 ? " attachment is" : " attachments are") + " waiting for "
            + std::to_string(waiting.missing) + " more of " + std::to_string(waiting.articles) + " articles";
    MainForm.StatusBar1.Panels(2).SetToolTip(toolTip);
}
