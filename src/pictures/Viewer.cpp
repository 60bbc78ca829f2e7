#include "pictures/Viewer.h"

#include "base/Files.h"
#include "base/Text.h"
#include "forms/Placing.h"
#include "pictures/PictureMenu.h"
#include "platform/Buttons.h"
#include "platform/Clipboard.h"
#include "platform/Events.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/ImageControl.h"
#include "platform/Screen.h"

#include <algorithm>

// One picture, as large as the window allows.
struct frmShowPicture : Form {
    static constexpr std::string_view emptyCaption = "<Filename Here>";

    static constexpr double designedWidth = 7290 + designedBorders;
    static constexpr double designedHeight = 6975 + designedTitle;
    static constexpr double leastSize = 900;

    frmShowPicture()
        : Form(
            "frmShowPicture", emptyCaption, {.clientWidth = 7290, .clientHeight = 6975, .border = BorderStyle::Sizable})
    {
        SetFallbackTopic(1060);
        cmdViewCurrent.SetToolTip("Show the picture that was stored last");
        Command1.SetToolTip("Empty the window; the file stays");
        Command2.SetToolTip("Delete the file of the picture, without a question");
        Check1.SetToolTip("Follow the search and the slide show");
        ClosesWithEscape();
    }

    CommandButton cmdViewCurrent{*this, "cmdViewCurrent", "View Current", {90, 45, 1140, 390}};
    CommandButton Command1{*this, "Command1", "Clear Image", {1350, 45, 1140, 390}};
    CommandButton Command2{*this, "Command2", "Delete Image", {2625, 45, 1140, 390}};
    CheckBox Check1{*this, "Check1", "Auto update with current", {3975, 45, 3240, 390}};
    Panel SSPanel1{*this, "SSPanel1", {30, 525, 7230, 6420}, PanelEdge::Sunken}; // what a picture is fitted to
    ImageControl Image1{SSPanel1, "Image1", {90, 120, 7020, 6165}}; // the picture; its Tag is the file's path
};

namespace {

constexpr std::string_view section = "PictureView";

}

Viewer::Viewer(frmTamarack& mainForm, Settings& newSettings, Desktop& newDesktop)
    : MainForm(mainForm)
    , settings(newSettings)
    , desktop(newDesktop)
{
    MainForm.mnuSizeableViewer.Click = [this] { OpenOrClose(MainForm.mnuSizeableViewer); };
}

Viewer::~Viewer() = default;

void Viewer::Bind()
{
    form->cmdViewCurrent.Click = [this] { cmdViewCurrent_Click(); };
    form->Command1.Click = [this] { Command1_Click(); };
    form->Command2.Click = [this] { Command2_Click(); };
    form->Resize = [this] { Form_Resize(); };
    for (MouseEvents* area : std::initializer_list<MouseEvents*>{form.get(), &form->SSPanel1, &form->Image1})
        area->MouseDown = [this](int button, int keys) { MouseDown(button, keys); };
    OfferPicture(desktop, form->Image1, form->SSPanel1, [this] { return form->Image1.Tag; });
    form->OnKeys("Ctrl+C", [this] { form->Image1.Picture().CopyToClipboard(); });
}

void Viewer::Form_Load()
{
    form->SetCaption(frmShowPicture::emptyCaption);
    form->Check1.SetValue(0);
    form->Image1.SetPicture({});
    form->Image1.Tag.clear();
    const double width = Screen::Width();
    const double height = Screen::Height();
    Restore("1", 2925, -width, width, &Form::SetLeft);
    Restore("2", 2265, -height, height, &Form::SetTop);
    Restore("3", frmShowPicture::designedWidth, frmShowPicture::leastSize, width, &Form::SetWidth);
    Restore("4", frmShowPicture::designedHeight, frmShowPicture::leastSize, height, &Form::SetHeight);
    Form_Resize();
}

// What is far out of range can only be damage.
void Viewer::Restore(std::string_view key, double design, double least, double most, void (Form::*set)(double))
{
    const std::string stored = settings.GetSetting(section, key);
    (*form.*set)(stored.empty() ? design : std::clamp(Val(stored), least, most));
}

void Viewer::Form_Unload()
{
    MainForm.mnuSizeableViewer.SetChecked(false);
    if (Screen::TellsPlaces()) {
        settings.SaveSetting(section, "1", DecimalText(static_cast<float>(form->Left())));
        settings.SaveSetting(section, "2", DecimalText(static_cast<float>(form->Top())));
    }
    settings.SaveSetting(section, "3", DecimalText(static_cast<float>(form->Width())));
    settings.SaveSetting(section, "4", DecimalText(static_cast<float>(form->Height())));
    form->Image1.SetPicture({});
}

void Viewer::Form_Resize()
{
    if (form->IsNormal()) {
        constexpr double roomBelow = 500;
        if (form->Height() + form->Top() > Screen::Height())
            form->SetTop(Screen::Height() - form->Height() - roomBelow);
        if (form->Top() < 0)
            form->SetTop(0);
        if (form->Width() + form->Left() > Screen::Width())
            form->SetLeft(Screen::Width() - form->Width());
        if (form->Left() < 0)
            form->SetLeft(0);
    }
    const double width = form->ScaleWidth() - 60;
    const double height = form->ScaleHeight() - 600;
    if (width > 10 && height > 10) {
        form->SSPanel1.SetWidth(width);
        form->SSPanel1.SetHeight(height);
    }
}

// The size that suits the picture, the name and the path, and nothing to be seen yet. False if there is no picture.
bool Viewer::MakeRoom(const Bitmap& picture, std::string_view displayName, const std::string& path)
{
    const auto size = FitPicture(picture, Loaded().SSPanel1);
    if (!size)
        return false;
    form->Image1.SetPicture({});
    form->Image1.SetWidth(size->width);
    form->Image1.SetHeight(size->height);
    CentreInContainer(form->Image1, form->SSPanel1);
    form->SetCaption(displayName);
    form->Image1.Tag = path;
    return true;
}

void Viewer::DisplayImage(const ImageControl& source, std::string_view displayName, const std::string& path)
{
    if (!MakeRoom(source.Picture(), displayName, path))
        return;
    (void)form->Image1.Load(path);
    DoEvents();
}

void Viewer::DisplayInFront(const ImageControl& source, std::string_view displayName, const std::string& path)
{
    if (source.Height() == 0 || source.Width() / source.Height() == 0)
        return;
    DisplayImage(source, displayName, path);
    if (!IsLoaded())
        return;
    form->BringToFront();
    MainForm.mnuSizeableViewer.SetChecked(true);
}

void Viewer::cmdViewCurrent_Click()
{
    const ImageControl& current = MainForm.Picture1;
    if (!MakeRoom(current.Picture(), BareName(current.Tag), current.Tag))
        return;
    form->Image1.SetPicture(current.Picture());
    DoEvents();
}

bool Viewer::ViewerAutoUpdate() const { return IsLoaded() && form->Check1.Value() == 1; }

// The path stays, so that Delete still finds the file.
void Viewer::Command1_Click()
{
    form->Image1.SetPicture({});
    form->SetCaption("");
}

void Viewer::Command2_Click()
{
    (void)DeleteFile(form->Image1.Tag);
    Command1_Click();
}

void Viewer::MouseDown(int button, int keys)
{
    if (button != MouseEvents::rightButton || keys != MouseEvents::ctrlKey)
        return;
    Raise(DebugGesture);
    Unload();
}
