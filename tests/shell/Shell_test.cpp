#include "tests/shell/ProgramTest.h"

#include <QProcess>
#include <QTest>
#include <csignal>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct StoredControl {
    const char *key, *control, *stored;
};

const StoredControl storedControls[]
    = {{"2", "chkJPEGFiles", "0"}, {"3", "chkGIFFiles", "1"}, {"4", "chkBitMapFiles", "1"}, {"5", "chkMPEGFiles", "1"},
        {"6", "txtNamed", "a, b;\"c\"=%41"}, {"7", "chkSingleParts", "False"}, {"8", "chkAllArticles", "False"},
        {"9", "chkAllCriteria", "True"}, {"10", "chkMaximumFiles", "1"}, {"11", "txtMaxToDownload", "25"},
        {"12", "chkLimitPictures", "1"}, {"13", "txtLimitPictures", "7"}, {"14", "txtKB", "300"},
        {"15", "cboSizeIs", "At Most"}, {"16", "chkGroupSubDir", "0"}, {"AutoLoad", "chkAutoLoad", "0"}};

class ShellTest : public ProgramTest {
protected:
    std::string Stored(const std::string& key) { return settings.GetSetting("Startup", key); }
};

}

TEST_F(ShellTest, SettingsComeBackAndAreKept)
{
    settings.SaveSetting("Startup", "1", "/no such place");
    for (const StoredControl& row : storedControls)
        settings.SaveSetting("Startup", row.key, row.stored);
    Start();
    for (const auto& [key, control, stored] : storedControls) {
        if (std::string_view(control).starts_with("chk"))
            EXPECT_EQ(IsChecked(control), stored == std::string("1") || stored == std::string("True")) << control;
        else
            EXPECT_EQ(TextOf(control), stored);
    }
    EXPECT_EQ(TextOf("txtSelectDir"), "/no such place");
    // The handlers follow a value that was brought back, except the warning.
    EXPECT_TRUE(IsEnabled("txtMaxToDownload") && IsEnabled("lblPerNewsGroup"));
    EXPECT_THAT(desktop.boxes, IsEmpty());

    for (const std::string& key : settings.GetAllSettings("Startup"))
        settings.DeleteSetting("Startup", key);
    // A second copy says so and ends, and keeps nothing.
    TestDesktop otherDesktop;
    otherDesktop.atEndProgram = [this] { EXPECT_THAT(settings.GetAllSettings("Startup"), IsEmpty()); };
    Program(otherDesktop, places).Start();
    EXPECT_EQ(otherDesktop.programEnds, 1);
    EXPECT_THAT(otherDesktop.BoxTitles(), ElementsAre("Tamarack"));
    ChooseMenu("mnuClose");
    EXPECT_EQ(desktop.programEnds, 1);
    for (const StoredControl& row : storedControls)
        EXPECT_EQ(Stored(row.key), row.stored) << row.key;
    EXPECT_EQ(Stored("1"), "/no such place");
}

// Whatever became of the settings file, the program starts with its design and can write there again.
TEST_F(ShellTest, MissingOddAndDamagedSettings)
{
    for (const char* content : {"[Startup]\n2=yes\n7=maybe\n15=At Sea\nAutoLoad=7\n", "[Startup]\n2=1\n6=k\\x",
             "\xff\xfe=[[\n[\n]\x01\n", "[Startup]\n10=@ByteArray(\n16=@Variant(x)\n15=a, b"}) {
        SCOPED_TRACE(content);
        MakeFile(places.settingsFile, std::string("[Servers]\n127.0.0.1=1\n") + content);
        Start();
        EXPECT_EQ(TextOf("txtKB") + TextOf("cboSizeIs"), "10");
        EXPECT_EQ(TextOf("txtSelectDir"), std::filesystem::current_path().string() + "/");
        for (const char* name :
            {"txtLimitPictures", "lblPerNewsGroup", "txtMaxToDownload", "txtPassword", "cmdSavePicks"})
            EXPECT_FALSE(IsEnabled(name) || IsVisible("Frame3")) << name;
        TypeInto("txtNamed", "boats");
        PressAlt(Qt::Key_X);
        EXPECT_TRUE(Until([this] { return Stored("6") == "boats"; }));
        EXPECT_EQ(Stored("2") + Stored("6") + Stored("7") + Stored("AutoLoad"), "1boatsTrue1");
        EXPECT_EQ(std::filesystem::status(places.settingsFile).permissions(), std::filesystem::perms(0600));
    }
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
        EXPECT_FALSE(formToo || IsVisible("frmBanner"));
        EXPECT_EQ(PanelText("StatusBar2", 1), *autoLoad == '0' ? "Total: 0" : "Total: 2");
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.cats"));
        EXPECT_NE(PanelText("StatusBar1", 4), "");
        EXPECT_THAT(desktop.boxes, IsEmpty());
    }
    std::filesystem::remove(ProgramFile("!@#!." + serverName));
    desktop.whileBoxIsUp = [](const TestDesktop::Box&) { EXPECT_TRUE(IsVisible("frmBanner")); };
    Start();
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("No News Group File"));
}

// What is shown before all has been brought back must not be kept as the user's.
TEST_F(ShellTest, AnEndDuringTheStartKeepsTheSettings)
{
    settings.SaveSetting("Startup", "6", "kites");
    MakeFile(SelectedFile(), "alt.cats\r\nalt.dogs\r\n");
    WhenUp("frmBanner", [this] { program->End(); });
    desktop.atEndProgram = [this] {
        EXPECT_EQ(Stored("6"), "kites");
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.cats\r\nalt.dogs\r\n");
    };
    Start();
    EXPECT_EQ(desktop.programEnds, 1);
    // Nor may the half-read groups of a server that was chosen just now.
    Start();
    AtNextYield([this] {
        EXPECT_EQ(RowsOf("lstSelectedGroups").size(), 1U);
        program->End();
    });
    program->MainWindow().cboNewsServer.Click();
    EXPECT_EQ(desktop.programEnds, 2);
}

// The real program, ended by the system while a message box holds it.
TEST_F(ShellTest, ASignalEndsTheProgramAsItsUserWould)
{
    const std::string home = folder.File("home");
    MakeFile(home + "/Tamarack/Tamarack.ini", "[Servers]\n127.0.0.1=1\n\n[Startup]\n6=kites\n");
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : std::map<const char*, std::string>{{"XDG_CONFIG_HOME", home},
             {"XDG_DATA_HOME", home}, {"QT_QPA_PLATFORMTHEME", "cat"}, {"TAMARACK_HOSTILE_MARK", folder.File("ran")}})
        environment.insert(name, QString::fromStdString(value));
    process.setProcessEnvironment(environment);
    std::filesystem::create_directories(folder.File("bin/platformthemes"));
    // An installed one keeps nothing beside it; and what was stored there decides nothing.
    std::filesystem::copy_file(TAMARACK_PROGRAM, folder.File("bin/tamarack"));
    std::filesystem::copy_file(TAMARACK_HOSTILE_PLUGIN, folder.File("bin/platformthemes/cat.so"));
    for (const char* name : {"bin/qt.conf", "bin/qt6.conf"})
        MakeFile(folder.File(name), "[Paths]\nPrefix=/nonexistent\n");
    process.start(QString::fromStdString(folder.File("bin/tamarack")), {});
    ASSERT_TRUE(Until([&] { return std::filesystem::exists(home + "/Tamarack/tamarack.lock"); }));
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
    const auto walk = [](const std::function<void()>& steps) {
        WhenUp("frmSelectDrive", steps);
        Click("cmdSelectDir");
        return TextOf("txtSelectDir");
    };
    const auto press = [](Qt::Key key) { QTest::keyClick(&Find<QWidget>("Dir1"), key); };
    const auto rowOf = [](const char* name) {
        const std::vector<std::string> rows = RowsOf("Dir1");
        return static_cast<int>(std::find(rows.begin(), rows.end(), name) - rows.begin());
    };
    const auto expectOpen = [&](const char* name) { EXPECT_EQ(CurrentRow("Dir1"), rowOf(name)); };
    const std::string cancelled = walk([&] {
        expectOpen("pictures");
        EXPECT_EQ(rowOf("Kites"), rowOf("boats") + 1);
        ClickRow("Dir1", rowOf("walk"));
        // The second click of a double click meets one of the boats there.
        DoubleClickRow("Dir1", rowOf("pictures"));
        expectOpen("pictures");
        Click("cmdCancel");
    });
    EXPECT_EQ(cancelled, here + "/pictures/");
    const std::string chosen = walk([&] {
        press(Qt::Key_Down);
        press(Qt::Key_Return);
        expectOpen("boats");
        press(Qt::Key_Backspace);
        press(Qt::Key_Backspace);
        std::filesystem::remove_all(here + "/other");
        ClickRow("Dir1", rowOf("other"));
        expectOpen("walk");
        Click("CmdExit");
    });
    EXPECT_EQ(chosen, here + "/");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Error"));
    program->MainWindow().txtSelectDir.SetText("/no such place/");
    EXPECT_EQ(walk([] { Click("CmdExit"); }), std::filesystem::current_path().string() + "/");
}
