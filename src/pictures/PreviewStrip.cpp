#include "pictures/PreviewStrip.h"

#include "base/Files.h"
#include "forms/Placing.h"
#include "platform/Events.h"

PreviewStrip::PreviewStrip(frmTamarack& mainForm, Viewer& newViewer)
    : MainForm(mainForm)
    , viewer(newViewer)
{
    for (int index = 0; index < 3; ++index) {
        MainForm.Image2[index].DblClick = [this, index] { image2_DblClick(index); };
        MainForm.SSPanel1[index].DblClick = [this, index] { image2_DblClick(index); };
        MainForm.Command2[index].Click = [this, index] { image2_DblClick(index); };
        MainForm.cmdClear[index].Click = [this, index] { cmdClear_Click(index); };
        MainForm.cmdDelete[index].Click = [this, index] { cmdDelete_Click(index); };
    }
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
    const auto size = FitPicture(MainForm.Picture1.Picture(), MainForm.SSPanel1[0]);
    if (!size)
        return;
    MoveSlot(1, 2);
    MoveSlot(0, 1);
    ImageControl& newest = MainForm.Image2[0];
    newest.SetVisible(false);
    newest.SetPicture({});
    newest.SetWidth(size->width);
    newest.SetHeight(size->height);
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

void PreviewStrip::image2_DblClick(int index)
{
    const ImageControl& image = MainForm.Image2[index];
    if (image.Height() == 0 || image.Width() / image.Height() == 0)
        return;
    const Label& label = MainForm.Label2[index];
    viewer.DisplayImage(image, label.Caption(), label.Tag);
    if (viewer.BringToFront())
        MainForm.mnuSizeableViewer.SetChecked(true);
    DoEvents();
}

// The path stays, so that Delete still finds the file.
void PreviewStrip::cmdClear_Click(int index)
{
    MainForm.Image2[index].SetPicture({});
    MainForm.Label2[index].SetCaption("");
}

void PreviewStrip::cmdDelete_Click(int index)
{
    (void)DeleteFile(MainForm.Label2[index].Tag);
    cmdClear_Click(index);
}
