#pragma once

#include "forms/DirectoryWalk.h"
#include "pictures/Viewer.h"

#include <cstdint>
#include <memory>
#include <string>

struct frmSlideShow;

// The slide show, frmSlideShow: a timer puts the files of a directory into the next of six panes, one after the other.
// As with the viewer, the window is built at its first use and kept, and each opening finds it as new.
class SlideShow {
public:
    SlideShow(frmTamarack& mainForm, Settings& settings, Desktop& desktop, Viewer& viewer);
    ~SlideShow();

    // Help is wanted on this topic.
    std::function<void(int topic)> HelpContext;

private:
    static constexpr int nobody = -1;

    frmSlideShow& Loaded();
    void Bind();
    void Form_Load();
    void Form_Unload();
    void mnuSlideShow_Click();

    void Timer1_Timer();
    void Command1_Click(int index);
    void StartShow();
    void StopShow();
    void DeleteFileOfPane();
    void PreviewImage_Click(int index);
    void PreviewImage_DblClick(int index);
    void lstFiles_DblClick();
    void txtDelay_Change();
    void Dir1_Change();

    void TakeDelay();
    void ShowTotal();
    void ClearPane(int index);

    frmTamarack& MainForm;
    Settings& settings;
    Desktop& desktop;
    Viewer& viewer;
    std::unique_ptr<frmSlideShow> form;
    std::unique_ptr<DirectoryWalk> walk;
    bool loaded = false;
    bool ticking = false;

    int NextPane = 0; // the pane that the next tick fills
    int SelectedPane = 0; // what Delete, Viewer and Clear act on; at first without a highlight
    std::int32_t ImageNumber = 0; // the place in lstFiles of the file shown last, counted from 1
    std::string CurrentFile;
};
