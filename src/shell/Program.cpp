#include "shell/Program.h"

using namespace std::chrono_literals;

Program::Program(Desktop& newDesktop, const ProgramPlaces& places)
    : desktop(newDesktop)
    , settings(places.settingsFile)
    , Session(MainForm, desktop)
    , mainSettings(MainForm, settings)
    , selectedGroups(MainForm, Session)
    , groupStore(MainForm, Session, desktop)
    , groupFilters(MainForm, Session)
    , picking(MainForm)
    , pointerActions(MainForm, Session, desktop)
    , credentials(MainForm, settings)
    , serverList(MainForm, Session, settings, credentials, selectedGroups, groupStore)
    , previewStrip(MainForm)
    , criteria(MainForm, desktop)
    , matching(MainForm, Session, criteria)
    , store(MainForm, Session, previewStrip)
    , scan(MainForm, Session, desktop, matching, store)
    , findNow(MainForm, Session, desktop, scan)
    , destination(MainForm, desktop)
{
    Session.AppDir = places.appDir;
    MainForm.Unload = [this] { Form_Unload(); };
    MainForm.Command1.Click = [this] { Form_Unload(); };
    MainForm.mnuClose.Click = [this] { Form_Unload(); };
    MainForm.Timer2.Tick = [this] { Timer2_Timer(); };
}

void Program::Start() { Form_Load(); }

void Program::Form_Load()
{
    Session.SearchPos = 1;
    mainSettings.RestoreAutoLoad();
    MainForm.SetHeight(frmTamarack::heightWithoutPreviews);
    MainForm.Timer2.SetEnabled(true);
    serverList.Fill();
    selectedGroups.LoadSelectedGroups();
    MainForm.SetMousePointer(MousePointer::Default);
    mainSettings.Restore();
    criteria.BuildFilePatterns();
    MainForm.SetVisible(true);
}

void Program::Timer2_Timer()
{
    MainForm.Timer2.SetInterval(30000ms);
    MainForm.StatusBar1.Panels(4).SetStyle(PanelStyle::Time);
}

// Also in the middle of a search: what is on the disk by then stays, and nothing else is waited for.
void Program::Form_Unload()
{
    mainSettings.Save();
    serverList.SaveDefault();
    selectedGroups.SaveSelectedGroups();
    MainForm.TCP1.Close();
    desktop.EndProgram();
}
