#include "pictures/PreviewStrip.h"

#include "forms/Placing.h"
#include "platform/Events.h"

PreviewStrip::PreviewStrip(frmTamarack& mainForm)
    : MainForm(mainForm)
{
    MainForm.mnuInteractiveDownload.Click = [this] { mnuInteractiveDownload_Click(); };
}

void PreviewStrip::mnuInteractiveDownload_Click()
{
    const bool show = !MainForm.mnuInteractiveDownload.Checked();
    MainForm.mnuInteractiveDownload.SetChecked(show);
    if (show) {
        MainForm.SetHeight(frmTamarack::heightWithPreviews);
        MainForm.Frame3.SetVisible(true);
    } else {
        MainForm.Frame3.SetVisible(false);
        MainForm.SetHeight(frmTamarack::heightWithoutPreviews);
    }
}

void PreviewStrip::ShowPic(const std::string& fileName)
{
    const Picture& picture = MainForm.Picture1.Picture();
    if (picture.Height() == 0)
        return;
    const float aspect = static_cast<float>(static_cast<double>(picture.Width()) / picture.Height());
    if (aspect == 0)
        return;
    const FittedSize size = Fit(aspect, MainForm.SSPanel1[0].Width(), MainForm.SSPanel1[0].Height());
    MoveSlot(1, 2);
    MoveSlot(0, 1);
    ImageControl& newest = MainForm.Image2[0];
    newest.SetVisible(false);
    newest.SetPicture({});
    newest.SetWidth(size.width);
    newest.SetHeight(size.height);
    MainForm.Label2[0].SetCaption(MainForm.UU.ImageFilename());
    MainForm.Label2[0].Tag = fileName;
    newest.SetPicture(MainForm.Picture1.Picture());
    CentreInContainer(newest, MainForm.SSPanel1[0]);
    newest.SetVisible(true);
}

void PreviewStrip::MoveSlot(int from, int to)
{
    ImageControl& target = MainForm.Image2[to];
    const ImageControl& source = MainForm.Image2[from];
    target.SetVisible(false);
    target.SetPicture({});
    target.SetWidth(source.Width());
    target.SetHeight(source.Height());
    MainForm.Label2[to].SetCaption(MainForm.Label2[from].Caption());
    MainForm.Label2[to].Tag = MainForm.Label2[from].Tag;
    target.SetPicture(source.Picture());
    CentreInContainer(target, MainForm.SSPanel1[to]);
    target.SetVisible(true);
    DoEvents();
}
