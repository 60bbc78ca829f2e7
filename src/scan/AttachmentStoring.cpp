#include "scan/AttachmentStoring.h"

#include "decoder/AttachmentName.h"
#include "platform/Events.h"
#include "platform/Files.h"
#include "platform/Screen.h"
#include "platform/Text.h"

#include <algorithm>

namespace {

// A group's name comes from a server or a file: it must not lead out of the destination, nor to what is hidden there,
// and it has to show what it is. No component of a name is empty (RFC 5536, section 3.1.4).
bool CanBeDirectoryName(std::string_view name)
{
    return !name.empty() && !name.starts_with('.') && !name.ends_with('.') && name.find("..") == std::string_view::npos
        && !name.starts_with('-') && name.find('/') == std::string_view::npos && IsVisibleThroughout(name);
}

}

std::string ArticleInHand::Caption(std::string_view doing, const std::string& group) const
{
    std::string caption(doing);
    caption.append(std::to_string(number)).append(" of ").append(std::to_string(lastInGroup));
    return caption.append(" -- ").append(group);
}

AttachmentStoring::AttachmentStoring(
    frmTamarack& mainForm, NewsSession& session, PreviewStrip& newPreviews, Viewer& newViewer)
    : MainForm(mainForm)
    , Session(session)
    , previews(newPreviews)
    , viewer(newViewer)
{
}

AfterStoring AttachmentStoring::Store(const ArticleInHand& article, const std::string& body)
{
    Screen::SetMousePointer(MousePointer::Hourglass);
    DoEvents();
    const std::string destination = MainForm.txtSelectDir.Text();
    const std::string temporaryFile = destination + "article" + std::to_string(article.number) + ".uue";
    Decode(article, temporaryFile, body);
    if (MainForm.UU.DecodeStatus() > 0) {
        Show(MoveToItsPlace(destination));
        ++GroupCount;
        ++TotalCount;
        if (Val(MainForm.txtLimitPictures.Text()) <= GroupCount && MainForm.chkLimitPictures.Value() == 1) {
            (void)DeleteFile(temporaryFile);
            return AfterStoring::GroupLimitReached;
        }
        if (Val(MainForm.txtMaxToDownload.Text()) <= TotalCount && MainForm.chkMaximumFiles.Value() == 1)
            Session.StopFlag = true;
        MainForm.StatusBar1.Panels(2).SetText("Items: " + std::to_string(TotalCount));
    }
    (void)DeleteFile(temporaryFile);
    return AfterStoring::GoOn;
}

void AttachmentStoring::Decode(const ArticleInHand& article, const std::string& temporaryFile, const std::string& body)
{
    MainForm.SetCaption(article.Caption("Decoding ", Session.CurrentGroup));
    // What could not be written is for the decoder to judge.
    (void)WriteFile(temporaryFile, body, "\r\n");
    MainForm.UU.SetDecodeFilename(temporaryFile);
    Screen::SetMousePointer(MousePointer::Default);
    MainForm.SetCaption(article.Caption("Finished decoding ", Session.CurrentGroup));
    DoEvents();
}

// Gives the full path of the stored attachment, of the first if there are several.
std::string AttachmentStoring::MoveToItsPlace(const std::string& destination)
{
    const std::string& name = MainForm.UU.ImageFilename();
    if (MainForm.chkGroupSubDir.Value() != 1)
        return destination + name;
    const std::string groupDirectory = destination + Session.CurrentGroup + "/";
    if (!CanBeDirectoryName(Session.CurrentGroup))
        return destination + name;
    // An attachment of the group's own name stands where the directory is to be.
    const std::string aside = destination + ".attachment.part";
    const bool inTheWay = IsNew(Session.CurrentGroup) && !MoveFile(destination + Session.CurrentGroup, aside);
    const bool made = MakeGroupDirectory(groupDirectory);
    if (inTheWay && (!made || MoveFile(aside, groupDirectory + Session.CurrentGroup)))
        (void)MoveFile(aside, destination + Session.CurrentGroup);
    if (!made)
        return destination + name;
    // The newest attachment replaces an older one of its name. A file that lay in the destination before stays there.
    for (const std::string& stored : MainForm.UU.StoredNames())
        (void)(IsNew(stored) ? MoveFile : CopyFile)(destination + stored, groupDirectory + stored);
    return groupDirectory + name;
}

// Did this decode make the file?
bool AttachmentStoring::IsNew(const std::string& name) const
{
    const auto holds = [&name](const std::vector<std::string>& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return holds(MainForm.UU.StoredNames()) && !holds(MainForm.UU.FoundNames());
}

// False if the path that leads to it does not exist, or if it is none of a group's. Any other failure shows when the
// file is moved.
bool AttachmentStoring::MakeGroupDirectory(const std::string& directory) const
{
    return MakeDirectory(directory) != std::errc::no_such_file_or_directory
        && std::none_of(OwnDirectories.begin(), OwnDirectories.end(),
            [&directory](const std::string& own) { return SameFile(directory, own); });
}

void AttachmentStoring::Show(const std::string& imageFile)
{
    if (!viewer.ViewerAutoUpdate && !MainForm.mnuInteractiveDownload.Checked())
        return;
    MainForm.Picture1.SetPicture({});
    MainForm.Picture1.Tag = imageFile;
    (void)MainForm.Picture1.Load(imageFile);
    if (MainForm.mnuInteractiveDownload.Checked())
        previews.ShowPic(imageFile);
    DoEvents();
    if (viewer.ViewerAutoUpdate)
        viewer.cmdViewCurrent_Click();
}
