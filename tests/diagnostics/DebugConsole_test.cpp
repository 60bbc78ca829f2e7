#include "base/Files.h"
#include "demo/sample/Encoders.h"
#include "diagnostics/DebugConsole.h"
#include "platform/Events.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/ScriptedServer.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>

#include <filesystem>

using testing::StartsWith;

namespace {

class DebugConsoleTest : public ProgramTest {
protected:
    // The one way in: the right mouse button with Ctrl held down, anywhere on the viewer.
    static void Open(const char* place = "frmShowPicture/SSPanel1")
    {
        ChooseMenu("mnuSizeableViewer");
        for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            EXPECT_FALSE(IsVisible("frmDebug"));
            QTest::mouseClick(&Find<QWidget>(place), Qt::RightButton, modifier);
        }
        EXPECT_TRUE(IsVisible("frmDebug") && !IsVisible("frmShowPicture"));
    }

    static std::string Shown() { return Find<QPlainTextEdit>("DebugWindow").toPlainText().toStdString(); }

    const std::string logFile = ProgramFile("debug.log");
};

}

TEST_F(DebugConsoleTest, AllTrafficIsLoggedWhileItIsOpen)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "kite.jpg")})});
    Start({"alt.kites"}, server.Port());
    Search();
    EXPECT_FALSE(FileExists(logFile));
    Open();
    program->MainWindow().cboNewsServer.Click(); // ends the session
    Forget();
    Search();
    const std::string log = ContentOf(logFile);
    EXPECT_THAT(log, testing::ContainsRegex("^@.*#group alt.kites\r\n211 .*begin 644 kite.jpg"));
    const std::string shown = Shown();
    EXPECT_EQ(QString::fromStdString(shown).replace("\n", "\r\n").toStdString(), log);

    // Commands by hand; the log begins anew and the area stays.
    Click("cmdReset");
    TypeInto("TxtManual", "stat 2");
    Click("cmdCmd(1)");
    EXPECT_THAT(ContentOf(logFile), StartsWith("#stat 2\r\n223 2 "));
    EXPECT_THAT(Shown(), StartsWith(shown));
    WindowNamed("frmDebug")->close();
    std::filesystem::remove(logFile);
    Search();
    EXPECT_FALSE(FileExists(logFile));
    Open("frmShowPicture/Image1");
    EXPECT_EQ(Shown(), "");
}

// While one command waits, whatever sends another is disabled.
TEST_F(DebugConsoleTest, OneCommandAtATime)
{
    ScriptedServer server("S: 200\nC: help\nX: pause\nS: 100 help\nS: next\nS: .\n"
                          // A text that is still on its way is no reply to anything; "group" has none.
                          "C: date\nS: 215 groups\nX: connect\nS: 200\nC: group alt.kites\nS: 211 2 1 2 alt.kites\n"
                          "C: stat 2\nS: 223 2 <a>\nC: next\nX: pause\nS: 421\n");
    const auto expectEnabled = [&](bool enabled) {
        for (const char* command : {"cmdFindNow", "cmdRefresh", "cmdRefreshDisk", "cmdCmd(0)", "cmdCmd(1)"}) {
            EXPECT_EQ(IsEnabled(command), enabled) << command;
            if (!enabled)
                Click(command);
        }
        EXPECT_EQ(IsEnabled("mnuFindNow") && IsEnabled("cboNewsServer"), enabled);
    };
    server.OnPause = [&](const std::string&) { expectEnabled(false); };
    Start({"alt.kites"}, server.Port());
    Open();
    for (const char* name : {"txtLogFile", "DebugWindow", "TxtManual"})
        EXPECT_FALSE(Find<QWidget>(name).accessibleName().isEmpty()) << name;
    Click("cmdCmd(0)");
    expectEnabled(true);
    for (const char* const line : {"date", "group alt.kites", "stat 2", "next"}) {
        TypeInto("TxtManual", line);
        QTest::keyClick(&Find<QWidget>("TxtManual"), Qt::Key_Return);
    }
    EXPECT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
}

TEST_F(DebugConsoleTest, OldTextGoesAndTroubleIsTold)
{
    frmTamarack mainForm;
    NewsSession session(mainForm, desktop);
    session.AppDir = folder.Path();
    DebugConsole debugConsole(session, desktop);
    debugConsole.Open();
    session.DebugLog("A" + std::string(31999, 'b'));
    session.DebugLog("c");
    EXPECT_EQ(Shown().size(), 32001U);
    for (const char* piece : {"d\r", "\n\u202E\r\ne"})
        session.DebugLog(piece);
    QTest::keyClick(&Find<QWidget>("DebugWindow"), Qt::Key_X); // which nobody can type into it
    EXPECT_EQ(Shown(), "A" + std::string(21999, 'b') + "cd\n\uFFFD\ne");
    // The end of it is seen, each line in one.
    for (int line = 0; line < 99; ++line)
        session.DebugLog(std::string(200, 'm') + "\r\n");
    const auto& area = Find<QPlainTextEdit>("DebugWindow");
    EXPECT_TRUE(area.verticalScrollBar()->maximum() > 50 && area.horizontalScrollBar()->maximum() > 100);
    EXPECT_EQ(area.verticalScrollBar()->value(), area.verticalScrollBar()->maximum());

    // Of what nobody reads the file has all and the area the end, by which it does not grow.
    Click("cmdReset");
    for (const char letter : {'x', 'y', 'z'}) {
        session.DebugLog(std::string(200'000, letter));
        EXPECT_LE(Shown().size(), 96'002U);
    }
    EXPECT_EQ(ContentOf(TextOf("txtLogFile")).size(), 600'000U);

    TypeInto("txtLogFile", ProgramFile("no such directory/debug.log"));
    session.DebugLog("e");
    EXPECT_EQ(desktop.BoxTitles(), std::vector<std::string>{"Access Error"});

    QWidget& window = *WindowNamed("frmDebug");
    const int width = area.width();
    for (const int height : {window.height() + 100, 30}) { // at last too low for them to follow
        window.resize(window.width() + 100, height);
        DoEvents();
        EXPECT_TRUE(area.width() == width + 100 && Find<QWidget>("txtLogFile").width() == width + 100);
        for (const char* below : {"TxtManual", "cmdReset"})
            EXPECT_GT(Find<QWidget>(below).y(), area.geometry().bottom()) << below;
    }
}
