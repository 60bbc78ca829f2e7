#include "pictures/PreviewStrip.h"

#include "base/Files.h"
#include "forms/Placing.h"
#include "pictures/PictureMenu.h"
#include "platform/Events.h"

PreviewStrip::PreviewStrip(frmTamarack& mainForm, Desktop& desktop, Viewer& newViewer)
    : MainForm(mainForm)
    , viewer(newViewer)
{
    for (int index = 0; index < 3; ++index) {
        MainForm.Image2[index].DblClick = [this, index] { image2_DblClick(index); };
        MainForm.SSPanel1[index].DblClick = [this, index] { image2_DblClick(index); };
        MainForm.Command2[index].Click = [this, index] { image2_DblClick(index); };
        MainForm.cmdClear[index].Click = [this, index] { cmdClear_Click(index); };
        MainForm.cmdDelete[index].Click = [this, index] { cmdDelete_Click(index); };
        OfferPicture(desktop, MainForm.Image2[index], MainForm.SSPanel1[index],
            [this, index] { return MainForm.Label2[index].Tag; });
    }
    MainForm.mnuInteractiveDownload.Click = [this] { mnuInteractiveDownload_Click(); };
}

void PreviewStrip::mnuInteractiveDownload_Click()
{
    const bool show = !MainForm.mnuInteractiveDownload.Checked();
    MainForm.mnuInteractiveDownload.SetChecked(show);
    MainForm.SetHeight(show ? frmTamarack::heightWithPreviews : frmTamarack::heightWithoutPreviews);
    MainForm.Frame3.SetVisible(show);
}

void PreviewStrip::ShowPic(const std::string& fileName)
{
    const auto size = FitPicture(MainForm.Picture1.Picture(), MainForm.SSPanel1[0]);
    if (!size)
        return;
    MoveOn(1);
    MoveOn(0);
    Fill(0, size->width, size->height, MainForm.UU.ImageFilename(), fileName, MainForm.Picture1.Picture());
}

// Into the next slot, whose picture goes. Lets events through.
void PreviewStrip::MoveOn(int slot)
{
    const ImageControl& image = MainForm.Image2[slot];
    const Label& label = MainForm.Label2[slot];
    Fill(slot + 1, image.Width(), image.Height(), label.Caption(), label.Tag, image.Picture());
    DoEvents();
}

void PreviewStrip::Fill(
    int slot, double width, double height, std::string_view name, const std::string& path, const Bitmap& picture)
{
    ImageControl& image = MainForm.Image2[slot];
    image.SetWidth(width);
    image.SetHeight(height);
    MainForm.Label2[slot].SetCaption(name);
    MainForm.Label2[slot].Tag = path;
    image.SetPicture(picture);
    CentreInContainer(image, MainForm.SSPanel1[slot]);
}

void PreviewStrip::image2_DblClick(int index)
{
    const Label& label = MainForm.Label2[index];
    viewer.DisplayInFront(MainForm.Image2[index], label.Caption(), label.Tag);
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
