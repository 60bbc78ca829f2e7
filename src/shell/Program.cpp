#include "shell/Program.h"

#include "platform/Events.h"
#include "shell/frmBanner.h"

using namespace std::chrono_literals;

namespace {

constexpr const char* lockName = "tamarack.lock";

}

Program::Program(Desktop& newDesktop, const ProgramPlaces& places)
    : desktop(newDesktop)
    , resources(places.resources)
    , lock(places.appDir + lockName)
    , settings(places.settingsFile)
    , Session(MainForm, desktop)
    , debugWindow(Session, desktop)
    , help(desktop)
    , about(MainForm)
    , mainSettings(MainForm, settings)
    , selectedGroups(MainForm, Session, desktop)
    , groupStore(MainForm, Session, desktop)
    , groupFilters(MainForm, Session)
    , serverList(MainForm, Session, settings, desktop, selectedGroups, groupStore,
          AddressOfFile(resources + "help/find-a-server.html"))
    , viewer(MainForm, settings)
    , previewStrip(MainForm, viewer)
    , slideShow(MainForm, settings, desktop, viewer)
    , criteria(MainForm, Session, desktop)
    , saving(MainForm, Session, previewStrip, viewer, lock)
    , findNow(MainForm, Session, desktop, criteria, saving)
    , destination(MainForm, desktop)
{
    Session.AppDir = places.appDir;
    saving.OwnDirectories = places.Directories();
    MainForm.Unload = [this] { Form_Unload(); };
    MainForm.Command1.Click = [this] { Form_Unload(); };
    MainForm.mnuClose.Click = [this] { Form_Unload(); };
    viewer.DebugGesture = [this] { debugWindow.Open(); };
    serverList.HelpContext = [this](int topic) { help.HelpContext(topic); };
    slideShow.HelpContext = [this](int topic) { help.HelpContext(topic); };
    MainForm.mnuHelpTopics.Click = [this] { help.HelpContents(); };
    MainForm.Timer2.Tick = [this] { Timer2_Timer(); };
}

void Program::Start()
{
    if (lock.HeldByAnother()) {
        desktop.MsgBox("Tamarack is already running.\r\n"
                       "A second one would write into the same files.",
            "Tamarack");
        desktop.EndProgram();
        return;
    }
    if (lock.OfAnotherUser()) {
        desktop.MsgBox("Tamarack may be running for another user, whose file this is:\r\n" + Session.AppDir + lockName
                + "\r\nIf it is not, delete the file and start again.",
            "Tamarack");
        desktop.EndProgram();
        return;
    }
    Form_Load();
}

// What is on the form before it is visible is not yet what the user left there, and must not be kept as such.
void Program::End()
{
    if (MainForm.Visible()) {
        Form_Unload();
        return;
    }
    help.HelpQuit();
    desktop.EndProgram();
}

void Program::Form_Load()
{
    Session.SearchPos = 1;
    mainSettings.RestoreAutoLoad();
    MainForm.SetHeight(frmTamarack::heightWithoutPreviews);
    help.HelpInit(resources);
    if (!LoadBehindBanner()) {
        help.HelpQuit();
        desktop.EndProgram();
        return;
    }
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
    mainSettings.Restore();
    MainForm.SetVisible(true);
}

bool Program::LoadBehindBanner()
{
    frmBanner banner;
    banner.Picture.SetPicture(MainForm.Image1.Picture());
    banner.CentreOnScreen();
    banner.SetVisible(true);
    DoEvents();
    MainForm.Timer2.SetEnabled(true);
    if (!serverList.Fill())
        return false;
    if (FileExists(groupStore.FileName())) {
        if (MainForm.chkAutoLoad.Value() == 1)
            groupStore.LoadGroupsFromDisk(banner.ProgressBar1, banner.Label1);
        banner.Label1.SetCaption("Loading Selected Groups...");
        selectedGroups.LoadSelectedGroups();
    } else {
        desktop.MsgBox("Your local Newsgroup file does not exist.\r\n"
                       "You must REFRESH it from the NETWORK\r\n"
                       "on the News Groups tab",
            "No News Group File");
    }
    while (!Timer2Fired)
        WaitForEvents();
    return true;
}

void Program::Timer2_Timer()
{
    MainForm.Timer2.SetInterval(30000ms);
    Timer2Fired = true;
    MainForm.StatusBar1.Panels(4).SetStyle(PanelStyle::Time);
}

// Also in the middle of a search: what is on the disk by then stays, and nothing else is waited for.
void Program::Form_Unload()
{
    mainSettings.Save();
    serverList.SaveDefault();
    selectedGroups.SaveSelectedGroups();
    help.HelpQuit();
    MainForm.TCP1.Close();
    saving.End();
    desktop.EndProgram();
}
