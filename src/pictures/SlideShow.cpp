#include "pictures/SlideShow.h"

#include "base/Files.h"
#include "base/Text.h"
#include "forms/Placing.h"
#include "pictures/PictureMenu.h"
#include "pictures/frmSlideShow.h"
#include "platform/Events.h"
#include "platform/Screen.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr std::string_view section = "SlideShow";
constexpr int panes = 6;
constexpr int tipsTopic = 1180;

}

SlideShow::SlideShow(frmTamarack& mainForm, Settings& newSettings, Desktop& newDesktop, Viewer& newViewer)
    : MainForm(mainForm)
    , settings(newSettings)
    , desktop(newDesktop)
    , viewer(newViewer)
{
    MainForm.mnuSlideShow.Click = [this] { OpenOrClose(MainForm.mnuSlideShow); };
}

SlideShow::~SlideShow() = default;

void SlideShow::Bind()
{
    walk = std::make_unique<DirectoryWalk>(MainForm, desktop, form->Drive1, form->Dir1);
    form->mnuExit.Click = [this] { Unload(); };
    form->Command1[0].Click = form->mnuStart.Click = [this] { StartShow(); };
    form->Command1[1].Click = form->mnuStop.Click = [this] { StopShow(); };
    form->Command1[2].Click = [this] { DeleteFileOfPane(); };
    form->Command1[3].Click = [this] { PreviewImage_DblClick(SelectedPane); };
    form->Command1[4].Click = [this] { ClearPane(); };
    form->Command1[5].Click = form->mnuPause.Click = [this] { PauseShow(); };
    form->Command1[7].Click = [this] { form->lstFiles.Refresh(); };
    form->mnuTips.Click = [this] { Raise(Form::HelpKey, tipsTopic); };
    for (int index = 0; index < panes; ++index) {
        for (MouseEvents* area :
            std::initializer_list<MouseEvents*>{&form->SSPanel1[index], &form->PreviewImage[index]}) {
            area->Click = [this, index] { PreviewImage_Click(index); };
            area->DblClick = [this, index] { PreviewImage_DblClick(index); };
        }
        OfferPicture(desktop, form->PreviewImage[index], form->SSPanel1[index],
            [this, index] { return form->SSPanel1[index].Tag; });
        const auto showName = [this, index] { ShowName(form->PreviewImage[index].Tag); };
        form->PreviewImage[index].MouseMove = showName;
        form->SSPanel1[index].GotFocus = showName;
    }
    form->lstFiles.DblClick = [this] { lstFiles_DblClick(); };
    form->lstFiles.PathChange = [this] { ShowTotal(); };
    form->txtDelay.Change = [this] { txtDelay_Change(); };
    // With a short delay the next tick may come while the picture of this one is still being shown.
    form->Timer1.Tick = [this] {
        if (!ticking)
            Timer1_Timer();
    };
}

void SlideShow::Form_Load()
{
    form->SetHeight(frmSlideShow::designedHeight);
    NextPane = 0;
    SelectedPane = 0;
    for (int index = 0; index < panes; ++index) {
        form->PreviewImage[index].SetPicture({});
        form->PreviewImage[index].Move(frmSlideShow::designedImage[index]);
        form->PreviewImage[index].Tag.clear();
        form->SSPanel1[index].SetHighlighted(false);
        form->SSPanel1[index].Tag.clear();
    }
    ShowName("");
    // Nobody may close a window that is still being put together, so that no event is let through here.
    form->Dir1.Change = nullptr;
    walk->Begin(MainForm.txtSelectDir.Text());
    form->Dir1.Change = [this] { Dir1_Change(); };
    (void)form->lstFiles.SetPath(form->Dir1.Path());
    StopShow();
    if (const std::string stored = settings.GetSetting(section, "1"); !stored.empty()) {
        const double left = Val(stored);
        form->SetLeft(left > 0 && left < Screen::Width() - form->Width() / 2 ? left : 1);
    }
    if (const std::string stored = settings.GetSetting(section, "2"); !stored.empty()) {
        const double top = Val(stored);
        form->SetTop(top > 0 && top < Screen::Height() - form->Height() / 2 ? top : 0);
    }
    form->chkOptions.SetValue(WholeNumber(settings.GetSetting(section, "3")).value_or(0));
    const std::string delay = settings.GetSetting(section, "4");
    form->txtDelay.SetText(
        delay.empty() ? std::string(frmSlideShow::designedDelay) : DecimalText(std::abs(Val(delay))));
}

void SlideShow::Form_Unload()
{
    if (Screen::TellsPlaces()) {
        settings.SaveSetting(section, "1", DecimalText(static_cast<float>(form->Left())));
        settings.SaveSetting(section, "2", DecimalText(static_cast<float>(form->Top())));
    }
    settings.SaveSetting(section, "3", std::to_string(form->chkOptions.Value()));
    settings.SaveSetting(section, "4", form->txtDelay.Text());
    MainForm.mnuSlideShow.SetChecked(false);
    SetPlaying(false);
    form->Picture1.SetPicture({});
}

void SlideShow::Timer1_Timer()
{
    ticking = true;
    ShowNextFile();
    ticking = false;
}

// The next file into the next pane. Whatever the user does in its yields holds at once, so that a stop there makes it
// show the first file.
void SlideShow::ShowNextFile()
{
    TakeDelay();
    DoEvents();
    if (!IsLoaded())
        return;
    ++ImageNumber;
    ShowPosition();
    if (ImageNumber > form->lstFiles.ListCount()) {
        if (form->chkOptions.Value() == 1)
            ImageNumber = 0;
        else
            StopShow();
        return;
    }
    ShowState("Pane: " + std::to_string(NextPane));
    const std::string name = form->lstFiles.List(ImageNumber - 1);
    const std::string currentFile = WithSeparator(form->Dir1.Path()) + name;
    // A file that is no picture leaves the pane to the next one. Where it takes long, so does one that the user has not
    // waited for: the show was stopped, another file double-clicked, or the window closed.
    const std::int32_t number = ImageNumber;
    if (!form->Picture1.Load(currentFile) || ImageNumber != number)
        return;
    const Bitmap& picture = form->Picture1.Picture();
    ImageControl& image = form->PreviewImage[NextPane];
    Panel& panel = form->SSPanel1[NextPane];
    constexpr double margin = 10;
    if (const auto size = FitPicture(picture, form->SSPanel1[0], margin)) {
        image.SetWidth(size->width);
        image.SetHeight(size->height);
    }
    CentreInContainer(image, panel);
    image.SetPicture(picture);
    image.Tag = name;
    panel.Tag = currentFile;
    if (viewer.ViewerAutoUpdate())
        viewer.DisplayImage(image, image.Tag, panel.Tag);
    NextPane = (NextPane + 1) % panes;
}

// The field's number, whatever else it holds, becomes the time to the next tick.
void SlideShow::TakeDelay()
{
    constexpr double longest = std::numeric_limits<std::int32_t>::max();
    const double delay = std::abs(Val(form->txtDelay.Text()));
    form->Timer1.SetInterval(
        std::chrono::milliseconds(static_cast<std::int32_t>(std::nearbyint(std::min(delay, longest)))));
    form->txtDelay.SetText(DecimalText(delay));
}

void SlideShow::StartShow()
{
    ShowState("Starting");
    if (form->lstFiles.ListCount() < 1) {
        ShowName("No Images");
        ShowState("Stopped");
        return;
    }
    TakeDelay();
    SetPlaying(true);
}

void SlideShow::StopShow()
{
    SetPlaying(false);
    ImageNumber = 0;
    ShowTotal();
    ShowState("Stopped");
}

void SlideShow::PauseShow()
{
    SetPlaying(false);
    ShowState("Paused");
}

void SlideShow::SetPlaying(bool playing)
{
    form->Timer1.SetEnabled(playing);
    wakefulness = playing ? desktop.KeepAwake(KeptAwake::Screen, "Showing pictures") : nullptr;
}

void SlideShow::DeleteFileOfPane()
{
    if (SelectedPane == noPane)
        return;
    (void)DeleteFile(form->SSPanel1[SelectedPane].Tag);
    form->lstFiles.Refresh();
    ShowTotal();
    ClearPane();
}

// The names stay with the pane, so that Delete still finds the file.
void SlideShow::ClearPane()
{
    if (SelectedPane == noPane)
        return;
    form->PreviewImage[SelectedPane].SetPicture({});
    PreviewImage_Click(SelectedPane);
}

void SlideShow::PreviewImage_Click(int index)
{
    if (index == SelectedPane) {
        form->SSPanel1[index].SetHighlighted(false);
        SelectedPane = noPane;
        return;
    }
    form->SSPanel1[index].SetHighlighted(true);
    if (SelectedPane > noPane)
        form->SSPanel1[SelectedPane].SetHighlighted(false);
    SelectedPane = index;
}

void SlideShow::PreviewImage_DblClick(int index)
{
    if (index == noPane)
        return;
    const ImageControl& image = form->PreviewImage[index];
    viewer.DisplayInFront(image, image.Tag, form->SSPanel1[index].Tag);
}

void SlideShow::lstFiles_DblClick()
{
    // Beside the rows.
    if (form->lstFiles.ListIndex() < 0)
        return;
    ImageNumber = form->lstFiles.ListIndex();
    SetPlaying(false);
    Timer1_Timer();
}

void SlideShow::txtDelay_Change()
{
    if (Val(form->txtDelay.Text()) < 1)
        form->txtDelay.SetText("1");
}

void SlideShow::Dir1_Change()
{
    MainForm.SetMousePointer(MousePointer::Hourglass);
    DoEvents();
    if (!form->lstFiles.SetPath(form->Dir1.Path()))
        desktop.MsgBox("You need to select a different folder", "Error");
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
}

void SlideShow::ShowTotal()
{
    form->StatusBar1.Panels(1).SetText("Total: " + std::to_string(form->lstFiles.ListCount()));
}

void SlideShow::ShowPosition()
{
    form->StatusBar1.Panels(1).SetText(
        "Displaying " + std::to_string(ImageNumber) + " of " + std::to_string(form->lstFiles.ListCount()));
}

void SlideShow::ShowState(std::string_view state) { form->StatusBar1.Panels(2).SetText(state); }

void SlideShow::ShowName(std::string_view name) { form->StatusBar1.Panels(3).SetText(name); }
