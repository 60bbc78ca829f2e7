#pragma once

#include "forms/KeptForm.h"
#include "forms/frmTamarack.h"
#include "platform/Desktop.h"
#include "platform/Settings.h"

struct frmShowPicture;

// The sizeable viewer, frmShowPicture: it shows a picture of the preview strip or of the slide show, or the one that
// the search stored last, and follows the two by itself if the user wants that. mnuSizeableViewer of the main form
// opens and closes it, and bears a mark while it is open.
//
// Each of the three that show a picture lets events through, and the viewer may be closed behind it.
class Viewer : KeptForm<frmShowPicture> {
public:
    Viewer(frmTamarack& mainForm, Settings& settings, Desktop& desktop);
    ~Viewer();

    // In the viewer that is open, reads the file whose picture a control shows and shows it under this name. Of the
    // control only the shape of its picture is taken; if it shows none, the viewer keeps what it shows. A file that
    // cannot be read leaves it empty. A newer picture, or the viewer's end, holds.
    void DisplayImage(const ImageControl& source, std::string_view displayName, const std::string& path);

    // The same for a user who has asked for it: the viewer opens and comes in front of the other windows, not
    // minimised, also if the control shows no picture. Does nothing if the control is too narrow for one.
    void DisplayInFront(const ImageControl& source, std::string_view displayName, const std::string& path);

    // In the viewer that is open, shows what Picture1 of the main form holds, if anything, under the bare name of its
    // Tag, the file's path. No file is read.
    void cmdViewCurrent_Click();

    // Whether the search and the slide show are to hand over each of their pictures: the viewer is open, and its user
    // wants that.
    bool ViewerAutoUpdate() const;

    // The right mouse button was pressed with Ctrl held down. The viewer is closed behind it.
    std::function<void()> DebugGesture;

private:
    void Bind() override;
    void Form_Load() override;
    void Form_Unload() override;
    void Form_Resize();
    void Command1_Click();
    void Command2_Click();
    void MouseDown(int button, int keys);

    void Restore(std::string_view key, double design, double least, double most, void (Form::*set)(double));
    bool MakeRoom(const Bitmap& picture, std::string_view displayName, const std::string& path);

    frmTamarack& MainForm;
    Settings& settings;
    Desktop& desktop;
};
