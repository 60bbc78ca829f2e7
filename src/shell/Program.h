#pragma once

#include "base/Files.h"
#include "catalogue/GroupFilters.h"
#include "catalogue/GroupStore.h"
#include "diagnostics/About.h"
#include "diagnostics/ContextIDs.h"
#include "diagnostics/DebugWindow.h"
#include "pictures/SlideShow.h"
#include "scan/FindNow.h"
#include "servers/ServerList.h"
#include "shell/Destination.h"
#include "shell/MainSettings.h"
#include "shell/ProgramPlaces.h"

// The whole program, put together: the main form, the session and everything that gives the form its behaviour. The
// behaviour dies before the form.
class Program {
public:
    Program(Desktop& desktop, const ProgramPlaces& places);

    // Brings back the state of the last run; at the end the main form is visible. Ends the program instead if another
    // one works on the same files, or if the user names no news server.
    void Start();

    // Ends the program as its user would, at any moment.
    void End();

    // For those who work the program from outside: the tests.
    frmTamarack& Form() { return MainForm; }

private:
    void Form_Load();
    bool LoadBehindBanner();
    void Form_Unload();
    void Timer2_Timer();

    Desktop& desktop;
    const std::string resources;
    LockFile lock;
    Settings settings;
    frmTamarack MainForm;
    NewsSession Session;
    DebugWindow debugWindow;
    ContextIDs help;
    About about;
    MainSettings mainSettings;
    SelectedGroups selectedGroups;
    GroupStore groupStore;
    GroupFilters groupFilters;
    ServerList serverList;
    Viewer viewer;
    PreviewStrip previewStrip;
    SlideShow slideShow;
    SearchCriteria criteria;
    AttachmentSaving saving;
    FindNow findNow;
    Destination destination;
    bool Timer2Fired = false;
};
