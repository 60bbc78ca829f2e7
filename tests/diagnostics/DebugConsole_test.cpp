#include "tests/shell/ProgramTest.h"

#include "base/Files.h"
#include "demo/sample/Encoders.h"
#include "diagnostics/DebugConsole.h"
#include "platform/Events.h"
#include "tests/support/ScriptedServer.h"

#include <QPlainTextEdit>
#include <QTest>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class DebugConsoleTest : public ProgramTest {
protected:
    // The one way in: the right mouse button with Ctrl held down, anywhere on the viewer.
    static void Open(const char* place = "frmShowPicture/SSPanel1")
    {
        ChooseMenu("mnuSizeableViewer");
        QTest::mouseClick(&Find<QWidget>(place), Qt::RightButton);
        EXPECT_FALSE(IsVisible("frmDebug"));
        QTest::mouseClick(&Find<QWidget>(place), Qt::RightButton, Qt::ControlModifier);
        EXPECT_TRUE(IsVisible("frmDebug"));
        EXPECT_FALSE(IsVisible("frmShowPicture"));
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
    EXPECT_EQ(TextOf("txtLogFile"), logFile);
    Click("cmdStop");
    program->MainWindow().cboNewsServer.Click(); // ends the session
    Forget();
    Search();
    const std::string log = ContentOf(logFile);
    EXPECT_THAT(log,
        AllOf(StartsWith("@"), HasSubstr("#group alt.kites\r\n"), HasSubstr("\r\n211 "),
            HasSubstr("begin 644 kite.jpg")));
    const std::string shown = Shown();
    EXPECT_EQ(QString::fromStdString(shown).replace("\n", "\r\n").toStdString(), log);

    // Commands by hand; the log begins anew and the area stays.
    Click("cmdReset");
    EXPECT_FALSE(FileExists(logFile));
    TypeInto("TxtManual", "stat 2");
    Click("cmdCmd(1)");
    EXPECT_THAT(ContentOf(logFile), StartsWith("#stat 2\r\n223 2 "));
    Click("cmdCmd(0)");
    EXPECT_THAT(ContentOf(logFile), HasSubstr("#help\r\n"));
    EXPECT_THAT(Shown(), StartsWith(shown.substr(0, 20)));

    const std::string before = ContentOf(logFile);
    WindowNamed("frmDebug")->close();
    Forget();
    Search();
    EXPECT_EQ(ContentOf(logFile), before);
    Open("frmShowPicture/Image1");
    EXPECT_EQ(Shown(), "");
}

// Whatever sends commands keeps the others from it, whichever of them was first.
TEST_F(DebugConsoleTest, OneCommandAtATime)
{
    ScriptedServer server("S: 200\nC: group alt.kites\nS: 211 2 1 2 alt.kites\nC: next\nS: 223 2 <a>\nC: body 2\n"
                          "X: pause\nS: 222\nS: begin 644 kite.jpg\nS: #<F5D\nS: `\nS: end\nS: .\nC: next\nS: 421\n"
                          "C: help\nX: pause\nS: 100 help\nS: next\nS: .\n"
                          // A text that is still on its way is no reply to anything.
                          "C: date\nS: 215 groups\nX: connect\nS: 200\nC: group alt.kites\nS: 211 2 1 2 alt.kites\n"
                          "C: stat 2\nS: 223 2 <a>\nC: next\nS: 421\n"
                          // One without a line is there at once, and "group" has none.
                          "C: help\nS: 100 help\nS: .\nC: group alt.kites\nS: 211 2 1 2 alt.kites\n"
                          "C: stat 2\nS: 223 2 <a>\nC:  ListGroup alt.kites\nS: 211 2 1 2 alt.kites\n"
                          "X: connect\nS: 200\nC: stat 2\nS: 412\n");
    const std::vector<std::string> commands = {"cmdFindNow", "cmdRefresh", "cmdRefreshDisk", "cmdCmd(0)", "cmdCmd(1)"};
    const auto expectEnabled = [&](bool enabled) {
        for (const std::string& command : commands)
            EXPECT_EQ(IsEnabled(command), enabled) << command;
        EXPECT_EQ(IsEnabled("mnuFindNow") && IsEnabled("cboNewsServer"), enabled);
    };
    server.OnPause = [&](const std::string&) {
        expectEnabled(false);
        for (const std::string& command : commands)
            Click(command);
        QTest::keyClick(&Find<QWidget>("TxtManual"), Qt::Key_Return);
    };
    Start({"alt.kites"}, server.Port());
    Check("chkAllArticles", true);
    Open();
    TypeInto("TxtManual", "date");
    Search();
    expectEnabled(true);
    EXPECT_EQ(ContentOf(destination + "alt.kites/kite.jpg"), "red");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(2, "alt.kites"));
    Click("cmdCmd(0)");
    expectEnabled(true);
    Click("cmdCmd(1)");
    Search();
    Click("cmdCmd(0)");
    for (const char* const line : {"group alt.kites", "stat 2", " ListGroup alt.kites", "stat 2"}) {
        TypeInto("TxtManual", line);
        Click("cmdCmd(1)");
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
    session.DebugLog("d\r\n");
    EXPECT_EQ(Shown(), "A" + std::string(21999, 'b') + "cd\n");

    // Of what nobody reads the file has all and the area the end, by which it does not grow.
    Click("cmdReset");
    std::string log;
    for (const std::string& line :
        {std::string(200'000, 'x') + "y", std::string(100'000, '-') + "\xC3\xA4\r\n", std::string(200'000, 'z')}) {
        log += line;
        session.DebugLog(line);
        EXPECT_LE(Shown().size(), 96'002U);
    }
    EXPECT_TRUE(Shown().find("-\xC3\xA4\nzz") != std::string::npos);
    EXPECT_TRUE(ContentOf(TextOf("txtLogFile")) == log);

    TypeInto("txtLogFile", ProgramFile("no such directory/debug.log"));
    session.DebugLog("e");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].title, "Access Error");
    EXPECT_THAT(desktop.boxes[0].text, AllOf(StartsWith("Tamarack\r\n"), HasSubstr("no such directory")));

    QWidget& window = *WindowNamed("frmDebug");
    const int width = Find<QWidget>("txtLogFile").width();
    window.resize(window.width() + 100, window.height() + 100);
    DoEvents();
    for (const char* name : {"txtLogFile", "DebugWindow"})
        EXPECT_EQ(Find<QWidget>(name).width(), width + 100) << name;
    for (const char* name : {"cmdReset", "cmdCmd(0)", "cmdCmd(1)", "TxtManual"}) {
        EXPECT_LE(Find<QWidget>(name).geometry().bottom(), window.height()) << name;
        EXPECT_GT(Find<QWidget>(name).y(), Find<QWidget>("DebugWindow").geometry().bottom()) << name;
    }
    window.resize(window.width() + 100, 30); // too low for them to follow
    DoEvents();
    EXPECT_EQ(Find<QWidget>("DebugWindow").width(), width + 100);
}
