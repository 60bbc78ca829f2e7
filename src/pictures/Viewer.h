#pragma once

#include "forms/frmTamarack.h"
#include "platform/Settings.h"

#include <memory>

struct frmShowPicture;
struct FittedSize;

// The sizeable viewer, frmShowPicture: it shows a picture of the preview strip or of the slide show, or the one that
// the search stored last, and follows the two by itself if the user wants that.
//
// The window is built at its first use and kept: when the user closes it, one of its handlers may still be waiting
// further down. Each opening finds it as new.
class Viewer {
public:
    Viewer(frmTamarack& mainForm, Settings& settings);
    ~Viewer();

    // Shows the picture file that a control shows, under this name. Does nothing if the control shows none; a file that
    // cannot be read leaves the viewer empty. Lets events through; a newer picture, or the viewer's end, then holds.
    void DisplayImage(const ImageControl& source, std::string_view displayName, const std::string& path);

    // Shows what Picture1 of the main form holds; its Tag is the file's path.
    void cmdViewCurrent_Click();

    // In front of the other windows, and not minimised. False if the user has closed it while it was being shown.
    [[nodiscard]] bool BringToFront();

    // Whether the search and the slide show are to hand over each of their pictures.
    bool ViewerAutoUpdate = false;

    // The right mouse button was pressed with Ctrl held down. The viewer is closed behind it.
    std::function<void()> DebugGesture;

private:
    frmShowPicture& Loaded();
    void Form_Load();
    void Form_Unload();
    void Form_Resize();
    void Check1_Click();
    void Command1_Click();
    void Command2_Click();
    void MouseDown(int button, int keys);
    void mnuSizeableViewer_Click();

    void Restore(std::string_view key, double design, double least, double most, void (Form::*set)(double));
    void Blank(const FittedSize& size);

    frmTamarack& MainForm;
    Settings& settings;
    std::unique_ptr<frmShowPicture> form;
    bool loaded = false;
};
