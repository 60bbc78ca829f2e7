#include "program-test/ProgramTest.h"

#include "diagnostics/DebugWindow.h"
#include "platform/Events.h"
#include "platform/Files.h"
#include "sample/Encoders.h"

#include <QPlainTextEdit>
#include <QTest>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class DebugWindowTest : public ProgramTest {
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

TEST_F(DebugWindowTest, AllTrafficIsLoggedWhileItIsOpen)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "kite.jpg")})});
    Start({"alt.kites"}, server.Port());
    Search();
    EXPECT_FALSE(FileExists(logFile));

    Open();
    EXPECT_EQ(TextOf("txtLogFile"), logFile);
    Click("cmdStop");
    program->Form().cboNewsServer.Click(); // ends the session
    Forget();
    Search();
    const std::string log = ContentOf(logFile);
    EXPECT_THAT(log,
        AllOf(StartsWith("@"), HasSubstr("#group alt.kites\r\n"), HasSubstr("\r\n211 "),
            HasSubstr("begin 644 kite.jpg")));
    std::string shown = Shown();
    for (std::size_t at = shown.find('\n'); at != std::string::npos; at = shown.find('\n', at + 2))
        shown.insert(at, "\r");
    EXPECT_EQ(shown, log);

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

TEST_F(DebugWindowTest, OldTextGoesAndTroubleIsTold)
{
    frmTamarack mainForm;
    NewsSession session(mainForm, desktop);
    session.AppDir = folder.Path();
    DebugWindow debugWindow(session, desktop);
    debugWindow.Open();
    session.DebugLog("A" + std::string(31999, 'b'));
    session.DebugLog("c");
    EXPECT_EQ(Shown().size(), 32001U);
    session.DebugLog("d\r\n");
    EXPECT_EQ(Shown(), "A" + std::string(21999, 'b') + "cd\n");

    TypeInto("txtLogFile", ProgramFile("no such directory/debug.log"));
    session.DebugLog("e");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].title, "Access Error");
    EXPECT_THAT(desktop.boxes[0].text, AllOf(StartsWith("Tamarack\r\n"), HasSubstr("no such directory")));

    QWidget& window = *WindowNamed("frmDebug");
    const int rightEdge = Find<QWidget>("txtLogFile").width();
    window.resize(window.width() + 100, window.height() + 100);
    DoEvents();
    EXPECT_EQ(Find<QWidget>("txtLogFile").width(), rightEdge + 100);
    EXPECT_LE(Find<QWidget>("cmdReset").geometry().bottom(), window.height());
    EXPECT_GT(Find<QWidget>("cmdReset").y(), Find<QWidget>("DebugWindow").geometry().bottom());
}
