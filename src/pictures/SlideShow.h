#pragma once

#include "forms/DirectoryWalk.h"
#include "forms/KeptForm.h"
#include "pictures/Viewer.h"

#include <cstdint>

struct frmSlideShow;

// The slide show, frmSlideShow: a timer puts the files of a directory into the next of six panes, one after the other.
// mnuSlideShow of the main form opens and closes it, and bears a mark while it is open. It begins in the directory of
// the attachments, txtSelectDir of the main form, and looks at a directory again only when its user asks for that; what
// a search stores meanwhile it does not know of.
//
// A tick lets events through, and so does whatever reads a directory or shows a picture; what the user does there holds
// at once. A tick that comes while another one waits is dropped.
class SlideShow : KeptForm<frmSlideShow> {
public:
    SlideShow(frmTamarack& mainForm, Settings& settings, Desktop& desktop, Viewer& viewer);
    ~SlideShow();

private:
    static constexpr int noPane = -1;

    void Bind() override;
    void Form_Load() override;
    void Form_Unload() override;

    void Timer1_Timer();
    void ShowNextFile();
    void SetPlaying(bool playing);
    void StartShow();
    void StopShow();
    void PauseShow();
    void DeleteFileOfPane();
    void PreviewImage_Click(int index);
    void PreviewImage_DblClick(int index);
    void lstFiles_DblClick();
    void txtDelay_Change();
    void Dir1_Change();

    void TakeDelay();
    void ClearPane();

    // The three panels of the status bar.
    void ShowTotal();
    void ShowPosition();
    void ShowState(std::string_view state);
    void ShowName(std::string_view name);

    frmTamarack& MainForm;
    Settings& settings;
    Desktop& desktop;
    Viewer& viewer;
    std::unique_ptr<DirectoryWalk> walk;
    std::shared_ptr<void> wakefulness; // of the screen, while the show plays
    bool ticking = false;

    int NextPane = 0; // the pane that the next tick fills
    int SelectedPane = 0; // what Delete, Viewer and Clear act on; at first without a highlight
    std::int32_t ImageNumber = 0; // the place in lstFiles of the file shown last, counted from 1
};
