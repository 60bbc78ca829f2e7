#include "shell/Program.h"

#include "catalogue/ServerFiles.h"
#include "diagnostics/About.h"
#include "platform/Events.h"
#include "platform/ProgressBar.h"
#include "shell/CertificateQuestion.h"
#include "shell/Destination.h"
#include "shell/MainSettings.h"

using namespace std::chrono_literals;

namespace {

// What the user sees while the program starts: its picture, and how far the list of groups has been read.
struct frmBanner : Form {
    frmBanner()
        : Form("frmBanner", "Tamarack", {.clientWidth = 4500, .clientHeight = 3570, .border = BorderStyle::None})
    {
    }

    ImageControl Picture{*this, "Picture", {0, 0, 4500, 3000}};
    Label Label1{*this, "Label1", "", {90, 3030, 4320, 255}}; // what is being read
    ProgressBar ProgressBar1{*this, "ProgressBar1", {90, 3315, 4320, 165}}; // how far
};

}

Program::Program(Desktop& newDesktop, const ProgramPlaces& newPlaces)
    : desktop(newDesktop)
    , places(newPlaces)
{
    Session.AppDir = places.appDir;
    saving.OwnDirectories = places.Directories();
    MainForm.UU.ReservedNames
        = {ServerFiles::groupPrefix, ServerFiles::selectedPrefix, ServerFiles::pointerPrefix, ContextIDs::helpFileName};
    MainForm.Unload = [this] { Form_Unload(); };
    MainForm.Command1.Click = [this] { Form_Unload(); };
    MainForm.mnuClose.Click = [this] { Form_Unload(); };
    viewer.DebugGesture = [this] { debugConsole.Open(); };
    MainForm.mnuHelpTopics.Click = [this] { help.HelpContents(); };
    MainForm.mnuAbout.Click = [this] { mnuAbout_Click(MainForm); };
    BindCertificateQuestion(MainForm, Session, settings, desktop);
    BindDestination(MainForm, desktop, [this] { saving.ShowWaiting(); });
    MainForm.Timer2.Tick = [this] { Timer2_Timer(); };
}

void Program::Start()
{
    std::string obstacle;
    if (lock.HeldByAnother()) {
        Activation::ActivateFirst();
        obstacle = "Tamarack is already running.\r\n"
                   "A second one would write into the same files.";
    } else if (lock.OfAnotherUser()) {
        obstacle = "Tamarack may be running for another user, whose file this is:\r\n" + lockFile
            + "\r\nIf it is not, delete the file and start again.";
    }
    if (!obstacle.empty()) {
        desktop.MsgBox(obstacle, "Tamarack");
        desktop.EndProgram();
        return;
    }
    Form_Load();
}

// What is on the form before the program is up is not yet what the user left there, and must not be kept as such.
void Program::End()
{
    if (isUp)
        Form_Unload();
    else
        GiveUp();
}

void Program::Form_Load()
{
    RestoreAutoLoad(MainForm, settings);
    MainForm.SetHeight(frmTamarack::heightWithoutPreviews);
    if (!LoadBehindBanner()) {
        GiveUp();
        return;
    }
    MainForm.SetMousePointer(MousePointer::Default);
    DoEvents();
    RestoreMainSettings(MainForm, settings);
    saving.ShowWaiting();
    isUp = true;
    MainForm.SetVisible(true);
    activation = Activation::Await([this](const std::string& action) { Activated(action); });
}

// Does what a button does that can be pressed just now.
void Program::Activated(const std::string& action)
{
    CommandButton* const button = action == "FindNow" ? &MainForm.cmdFindNow
        : action == "Stop"                            ? &MainForm.cmdStop
                                                      : nullptr;
    if (button == nullptr || Form::HasModalWindow())
        MainForm.BringToFront();
    else if (button->Enabled())
        Raise(button->Click);
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
    SaveMainSettings(MainForm, settings);
    serverList.SaveDefault();
    selectedGroups.SaveSelectedGroups();
    help.HelpQuit();
    MainForm.TCP1.Close();
    saving.End();
    desktop.EndProgram();
}

// Nothing is saved.
void Program::GiveUp()
{
    help.HelpQuit();
    desktop.EndProgram();
}
