#pragma once

#include "base/Files.h"
#include "catalogue/GroupFilters.h"
#include "catalogue/GroupStore.h"
#include "diagnostics/ContextIDs.h"
#include "diagnostics/DebugConsole.h"
#include "pictures/SlideShow.h"
#include "platform/Activation.h"
#include "scan/FindNow.h"
#include "servers/ServerList.h"
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
    frmTamarack& MainWindow() { return MainForm; }

private:
    void Form_Load();
    bool LoadBehindBanner();
    void Form_Unload();
    void GiveUp();
    void Timer2_Timer();
    void Activated(const std::string& action);

    Desktop& desktop;
    const ProgramPlaces places;
    const std::string lockFile = places.appDir + "tamarack.lock";
    LockFile lock{lockFile};
    Settings settings{places.settingsFile};
    frmTamarack MainForm;
    NewsSession Session{MainForm, desktop};
    DebugConsole debugConsole{Session, desktop};
    ContextIDs help{desktop, places.resources};
    SelectedGroups selectedGroups{MainForm, Session, desktop};
    GroupStore groupStore{MainForm, Session, desktop};
    GroupFilters groupFilters{MainForm, Session};
    ServerList serverList{MainForm, Session, settings, desktop, selectedGroups, groupStore,
        AddressOfFile(places.resources + "help/find-a-server.html")};
    Viewer viewer{MainForm, settings, desktop};
    PreviewStrip previewStrip{MainForm, desktop, viewer};
    SlideShow slideShow{MainForm, settings, desktop, viewer};
    SearchCriteria criteria{MainForm, Session, desktop};
    AttachmentSaving saving{MainForm, Session, previewStrip, viewer, lock};
    FindNow findNow{MainForm, Session, desktop, criteria, saving};
    std::shared_ptr<void> activation; // once the main form is visible
    bool Timer2Fired = false;
    bool isUp = false; // from here on what is on the main form is the user's
};
