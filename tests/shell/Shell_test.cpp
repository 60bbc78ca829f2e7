#include "tests/shell/ProgramTest.h"

#include <QProcess>
#include <QTest>
#include <csignal>
#include <filesystem>
#include <sys/stat.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

struct StoredControl {
    const char* key;
    std::string control;
    const char* stored;
    const char* shown; // what the control shows of it
};

const std::vector<StoredControl> storedControls = {{"2", "chkJPEGFiles", "0", "off"}, {"3", "chkGIFFiles", "1", "on"},
    {"4", "chkBitMapFiles", "1", "on"}, {"5", "chkMPEGFiles", "1", "on"},
    {"6", "txtNamed", "a, b;\"c\"=%41", "a, b;\"c\"=%41"}, {"7", "chkSingleParts", "False", "off"},
    {"8", "chkAllArticles", "False", "off"}, {"9", "chkAllCriteria", "True", "on"},
    {"10", "chkMaximumFiles", "1", "on"}, {"11", "txtMaxToDownload", "25", "25"}, {"12", "chkLimitPictures", "1", "on"},
    {"13", "txtLimitPictures", "7", "7"}, {"14", "txtKB", "300", "300"}, {"15", "cboSizeIs", "At Most", "At Most"},
    {"16", "chkGroupSubDir", "0", "off"}, {"AutoLoad", "chkAutoLoad", "0", "off"}};

class ShellTest : public ProgramTest {
protected:
    static std::string Shown(const std::string& control)
    {
        return !control.starts_with("chk") ? TextOf(control) : IsChecked(control) ? "on" : "off";
    }
};

}

TEST_F(ShellTest, SettingsComeBackAndAreKept)
{
    for (const StoredControl& row : storedControls)
        settings.SaveSetting("Startup", row.key, row.stored);
    settings.SaveSetting("Startup", "1", "/no such place");
    Start();
    for (const StoredControl& row : storedControls)
        EXPECT_EQ(Shown(row.control), row.shown) << row.control;
    EXPECT_EQ(TextOf("txtSelectDir"), "/no such place");
    // The handlers follow a value that was brought back, except the warning.
    EXPECT_TRUE(IsEnabled("txtMaxToDownload"));
    EXPECT_TRUE(IsEnabled("lblPerNewsGroup"));
    EXPECT_THAT(desktop.boxes, IsEmpty());

    for (const StoredControl& row : storedControls)
        settings.DeleteSetting("Startup", row.key);
    ChooseMenu("mnuClose");
    EXPECT_EQ(desktop.programEnds, 1);
    for (const StoredControl& row : storedControls)
        EXPECT_EQ(settings.GetSetting("Startup", row.key), row.stored) << row.key;
    EXPECT_EQ(settings.GetSetting("Startup", "1"), "/no such place");
}

TEST_F(ShellTest, MissingAndOddSettingsLeaveTheDesign)
{
    settings.DeleteSetting("Startup", "1");
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{
             {"2", "yes"}, {"7", "maybe"}, {"15", "At Sea"}, {"AutoLoad", "7"}})
        settings.SaveSetting("Startup", key, value);
    Start();
    EXPECT_EQ(TextOf("txtSelectDir"), std::filesystem::current_path().string() + "/");
    EXPECT_EQ(Shown("chkJPEGFiles") + Shown("chkSingleParts") + Shown("cboSizeIs") + Shown("chkAutoLoad"), "ononon");
    EXPECT_EQ(TextOf("txtKB"), "10");
    Click("Command1");
    EXPECT_EQ(settings.GetSetting("Startup", "2") + settings.GetSetting("Startup", "7"), "1True");
}

// Whatever became of the settings file, the program starts and can write there again where the disk lets it.
TEST_F(ShellTest, DamagedSettingsDoNotStopTheStart)
{
    const std::string file = folder.File("settings.ini");
    const std::string whole = "[Servers]\n127.0.0.1=1\n\n[Startup]\n6=kites\n2=0\n";
    for (const std::string& content :
        std::vector<std::string>{whole.substr(0, whole.size() - 3), "[Servers]\n127.0.0.1=1\n\xff\xfe=[[\n[\n]\x01\n",
            "[Servers]\n127.0.0.1=@Invalid()\n[Startup]\n10=@ByteArray(\n16=@Variant(x)\n15=a, b"}) {
        SCOPED_TRACE(content);
        MakeFile(file, content);
        Start();
        EXPECT_THAT(RowsOf("cboNewsServer"), Contains(serverName));
        EXPECT_EQ(TextOf("txtNamed"), content.starts_with(whole.substr(0, 40)) ? "kites" : "");
        TypeInto("txtNamed", "boats");
        Click("Command1");
        EXPECT_EQ(Settings(file).GetSetting("Startup", "6"), "boats");
        struct stat status { };
        ASSERT_EQ(stat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U);
    }
    // With a directory in its place there are no servers either.
    program.reset();
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    WhenUp("frmNewsServer", [] { Click("cmdSave"); });
    Start();
    EXPECT_EQ(TextOf("cboNewsServer"), "news.example.com");
    Click("Command1");
}

TEST_F(ShellTest, TheBannerStaysWhileTheGroupsAreRead)
{
    MakeFile(ProgramFile("!@#!." + serverName), "\"alt.boats 2 1 y\r\nalt.kites 1 1 y\"\r\n");
    MakeFile(SelectedFile(), "alt.cats\r\n");
    for (const char* autoLoad : {"", "0"}) {
        settings.SaveSetting("Startup", "AutoLoad", autoLoad);
        bool formToo = true;
        WhenUp("frmBanner", [&] { formToo = IsVisible("frmTamarack"); });
        Start();
        EXPECT_FALSE(formToo);
        EXPECT_FALSE(IsVisible("frmBanner"));
        EXPECT_EQ(PanelText("StatusBar2", 1), *autoLoad == '0' ? "Total: 0" : "Total: 2");
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.cats"));
        EXPECT_NE(PanelText("StatusBar1", 4), "");
        EXPECT_THAT(desktop.boxes, IsEmpty());
    }
    std::filesystem::remove(ProgramFile("!@#!." + serverName));
    desktop.whileBoxIsUp = [](const TestDesktop::Box&) { EXPECT_TRUE(IsVisible("frmBanner")); };
    Start();
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].title, "No News Group File");
    EXPECT_EQ(desktop.boxes[0].text,
        "Your local Newsgroup file does not exist.\r\nYou must REFRESH it from the NETWORK\r\non the News Groups tab");
}

// What the form shows before the settings are brought back must not be kept as the user's.
TEST_F(ShellTest, AnEndDuringTheStartKeepsTheSettings)
{
    settings.SaveSetting("Startup", "6", "kites");
    MakeFile(SelectedFile(), "alt.cats\r\nalt.dogs\r\n");
    WhenUp("frmBanner", [this] { program->End(); });
    desktop.atEndProgram = [this] {
        EXPECT_EQ(settings.GetSetting("Startup", "6"), "kites");
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.cats\r\nalt.dogs\r\n");
    };
    Start();
    EXPECT_EQ(desktop.programEnds, 1);

    // Nor may a half-read list of groups, from a server that was chosen just now.
    settings.SaveSetting("Servers", "localhost", "1");
    MakeFile(SelectedFile("localhost"), "alt.cats\r\nalt.dogs\r\n");
    desktop.atEndProgram = [this] { EXPECT_EQ(ContentOf(SelectedFile("localhost")), "alt.cats\r\nalt.dogs\r\n"); };
    Start();
    AtNextYield([this] {
        EXPECT_EQ(RowsOf("lstSelectedGroups").size(), 1U);
        program->End();
    });
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_EQ(desktop.programEnds, 2);
}

TEST_F(ShellTest, TheSecondCopyTellsSoAndEnds)
{
    Start();
    TestDesktop otherDesktop;
    settings.SaveSetting("Startup", "6", "kites");
    {
        Program other(otherDesktop, places);
        other.Start();
        EXPECT_FALSE(other.MainWindow().Visible());
    }
    ASSERT_EQ(otherDesktop.boxes.size(), 1U);
    EXPECT_EQ(
        otherDesktop.boxes[0].text, "Tamarack is already running.\r\nA second one would write into the same files.");
    EXPECT_EQ(otherDesktop.programEnds, 1);
    EXPECT_EQ(settings.GetSetting("Startup", "6"), "kites");
    Start(); // the first one's end makes way for the next
    EXPECT_EQ(desktop.programEnds, 0);
}

// The real program, ended by the system while a message box holds it.
TEST_F(ShellTest, ASignalEndsTheProgramAsItsUserWould)
{
    const std::string home = folder.File("home");
    MakeFile(home + "/Tamarack/Tamarack.ini", "[Servers]\n127.0.0.1=1\n\n[Startup]\n6=kites\n");
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        environment.insert(name, QString::fromStdString(home));
    environment.insert("QT_QPA_PLATFORMTHEME", "cat");
    environment.insert("TAMARACK_HOSTILE_MARK", QString::fromStdString(folder.File("ran")));
    process.setProcessEnvironment(environment);
    std::filesystem::create_directories(folder.File("bin/platformthemes"));
    std::filesystem::copy_file(
        TAMARACK_PROGRAM, folder.File("bin/tamarack")); // an installed one keeps nothing beside it
    // What was stored beside it decides nothing.
    std::filesystem::copy_file(TAMARACK_HOSTILE_PLUGIN, folder.File("bin/platformthemes/cat.so"));
    for (const char* name : {"bin/qt.conf", "bin/qt6.conf"})
        MakeFile(folder.File(name), "[Paths]\nPrefix=/nonexistent\n");
    process.start(QString::fromStdString(folder.File("bin/tamarack")), {});
    const std::string lock = home + "/Tamarack/tamarack.lock";
    ASSERT_TRUE(Until([&] { return std::filesystem::exists(lock); }));
    QTest::qWait(300); // it has no list of groups, and says so
    kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(Settings(home + "/Tamarack/Tamarack.ini").GetSetting("Startup", "6"), "kites");
    EXPECT_FALSE(std::filesystem::exists(folder.File("ran")));
}

TEST_F(ShellTest, WalkingToADestination)
{
    const std::string here = folder.File("walk");
    for (const char* name : {"/pictures/boats", "/pictures/Kites", "/pictures/.hidden", "/other"})
        std::filesystem::create_directories(here + name);
    settings.SaveSetting("Startup", "1", here + "/pictures/");
    Start();
    const auto walk = [this](const std::function<void()>& steps) {
        WhenUp("frmSelectDrive", steps);
        Click("cmdSelectDir");
        return TextOf("txtSelectDir");
    };
    const auto press = [](Qt::Key key) { QTest::keyClick(&Find<QWidget>("Dir1"), key); };
    const auto rowOf = [](const std::string& name) {
        const std::vector<std::string> rows = RowsOf("Dir1");
        return static_cast<int>(std::find(rows.begin(), rows.end(), name) - rows.begin());
    };
    const auto open = [](int up) { return RowsOf("Dir1").at(static_cast<std::size_t>(CurrentRow("Dir1") + up)); };

    EXPECT_EQ(walk([&] {
        EXPECT_EQ(CaptionOf("frmSelectDrive"), "Select the image destination");
        EXPECT_THAT(RowsOf("Drive1"), Contains("/"));
        EXPECT_EQ(open(0), "pictures");
        EXPECT_EQ(open(2), "Kites");
        EXPECT_THAT(RowsOf("Dir1"), Not(Contains(".hidden")));
        ClickRow("Dir1", rowOf("walk"));
        // The second click of a double click meets one of the boats there.
        DoubleClickRow("Dir1", rowOf("pictures"));
        EXPECT_EQ(open(0), "pictures");
        Click("cmdCancel");
    }),
        here + "/pictures/");
    EXPECT_EQ(walk([&] {
        press(Qt::Key_Down);
        press(Qt::Key_Return);
        EXPECT_EQ(open(0), "boats");
        press(Qt::Key_Backspace);
        press(Qt::Key_Backspace);
        EXPECT_EQ(open(0), "walk");
        // A directory that went away meanwhile.
        std::filesystem::remove_all(here + "/other");
        ClickRow("Dir1", rowOf("other"));
        Click("CmdExit");
    }),
        here + "/");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].text + "|" + desktop.boxes[0].title, "You need to select a different folder|Error");
    program->MainWindow().txtSelectDir.SetText("/no such place/");
    EXPECT_EQ(walk([&] { Click("CmdExit"); }), std::filesystem::current_path().string() + "/");
}
