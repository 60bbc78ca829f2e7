#include "demo/sample/Encoders.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/ScriptedServer.h"

#include <QHelpEvent>
#include <QLabel>
#include <QTest>
#include <QToolTip>

using testing::ElementsAre;

namespace {

using namespace std::chrono_literals;

class FindNowTest : public ProgramTest {
protected:
    static void ExpectBusy(bool busy)
    {
        for (const char* name : {"cmdRefresh", "cmdRefreshDisk", "cmdFindNow", "mnuFindNow", "SSFrame2", "txtPort"})
            EXPECT_EQ(IsEnabled(name), !busy) << name;
        for (const char* name : {"cmdStop", "Command1", "mnuClose", "chkJPEGFiles", "lstSelectedGroups"})
            EXPECT_TRUE(IsEnabled(name)) << name;
        EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), busy ? Qt::BusyCursor : Qt::ArrowCursor);
    }

    // Searches on a server that plays this script; the pointer of alt.kites stands on 5.
    void SearchOn(const std::string& script, const std::function<void()>& atPause = {})
    {
        Forget(PointerRecord(5, "alt.kites"));
        ScriptedServer server(script);
        server.OnPause = [&](const std::string&) { atPause(); };
        TypeInto("txtPort", std::to_string(server.Port()));
        Search();
        ASSERT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
        if (!script.ends_with("X: wait-close\n"))
            ExpectGone();
    }

    static void ExpectGone()
    {
        ASSERT_TRUE(Until([] { return PanelText("StatusBar1", 1) == "Status: Disconnected"; }));
    }
};

// A conversation, step by step, on a group whose pointer stands on 5.
const std::string enter = "X: connect\nS: 200\nC: group alt.kites\n";
const std::string entered = enter + "S: 211 9 1 9 alt.kites\nC: stat 5\n";
const std::string placed = entered + "S: 223 5 <a>\nC: next\n";
const std::string moved = placed + "S: 223 6 <b>\n";
const std::string asked = moved + "C: head 6\n";
const std::string toBody = "S: 221 6 <b>\nS: Path: a\nS: Subject: kite.jpg (1/1)\nS: .\nC: body 6\n";
const std::string body = "S: 222 6 <b>\nS: begin 644 kite.jpg\nS: #<F5D\nS: `\nS: end\nS: .\n";
const std::string stop = "X: pause stop\n";

const std::string itsEnd = "X: wait-close\n"; // the search is over
const std::string goesOn = "C: group alt.boats\nS: 411 no such group\nX: close\n"; // it is not
const std::string noMore = "S: 421 no more\n" + goesOn;

}

TEST_F(FindNowTest, ControlsDuringASearch)
{
    Start({}, 1);
    Click("cmdFindNow");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Select Groups"));
    EXPECT_EQ(CurrentTab("SSTMain"), 2);
    ScriptedServer server("S: 200\nC: group alt.kites\nX: pause\nS: 411 no\nX: close\n");
    server.OnPause = [&](const std::string&) {
        ExpectBusy(true);
        Click("cmdFindNow");
        ChooseMenu("mnuFindNow");
    };
    Start({"alt.kites"}, server.Port());
    Click("cmdStop"); // a stop before a search is none
    ChooseMenu("mnuFindNow");
    EXPECT_EQ(server.FirstProblem(), "");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Invalid News Group"));

    ExpectGone();
    server.StopListening();
    Search();
    EXPECT_EQ(desktop.boxes.back().title, "Connection Error");
    EXPECT_THAT(desktop.boxes.back().text, testing::StartsWith("Could not connect to server\r\nPlease make sure the "));
    ExpectBusy(false);
}

// What lies on disk at that moment is all that stays, and what was in hand comes to its place.
TEST_F(FindNowTest, ExitInTheMiddle)
{
    const std::string body = Uuencode("blue", "boat.jpg") + Uuencode("green", "cat.jpg");
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "kite.jpg"), body})});
    Start({"alt.kites"}, server.Port());
    TypeInto("txtNamed", "changed");
    atCaption["Finished decoding 3 of 3 -- alt.kites"] = [&] {
        EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/kite.jpg", "article3.uue", "boat.jpg", "cat.jpg"));
        EXPECT_EQ(ContentOf(destination + "article3.uue"), "\r\n" + body);
        AtNextYield([] { Click("Command1"); });
    };
    desktop.atEndProgram = [&] {
        EXPECT_EQ(settings.GetSetting("Startup", "6"), "changed");
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.kites\r\n");
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(3, "alt.kites"));
        EXPECT_THAT(
            FilesBelow(destination), ElementsAre("alt.kites/boat.jpg", "alt.kites/cat.jpg", "alt.kites/kite.jpg"));
    };
    Search();
    EXPECT_EQ(desktop.programEnds, 1);
    EXPECT_EQ(server.CommandCount("next"), 2U); // the connection was closed
}

TEST_F(FindNowTest, CaptionsInTheirOrder)
{
    SampleServer server(
        {GroupOf("alt.kites", 1, {Uuencode("red", "kite.jpg"), "text\r\n"}), GroupOf("alt.boats", 7, {})});
    Start({"alt.kites", "alt.none", "alt.boats"}, server.Port());
    atCaption["Finished decoding 2 of 3 -- alt.kites"] = [] { EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0"); };
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1"); // only what was stored
    EXPECT_THAT(captions,
        ElementsAre("Entering group alt.kites", "Setting group pointers: 0", "Scanning 2 of 3 -- alt.kites",
            "Getting 2 of 3 -- alt.kites", "Decoding 2 of 3 -- alt.kites", "Finished decoding 2 of 3 -- alt.kites",
            "Scanning 3 of 3 -- alt.kites", "Getting 3 of 3 -- alt.kites", "Decoding 3 of 3 -- alt.kites",
            "Finished decoding 3 of 3 -- alt.kites", "alt.kites -- No more new articles", "Entering group alt.none",
            "Entering group alt.boats", "Setting group pointers: 0", "alt.boats -- No more new articles",
            frmTamarack::idleCaption));
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Invalid News Group"));
    EXPECT_THAT(desktop.sleeps, ElementsAre(1500ms, 1500ms));
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0");
}

TEST_F(FindNowTest, BeginsAtTheCurrentRow)
{
    SampleServer server({});
    Start({"a", "b", "c"}, server.Port());
    for (const int row : {2, 0, 1}) {
        ClickRow("lstSelectedGroups", row);
        Search();
        EXPECT_EQ(captions.front(), "Entering group " + std::string(1, static_cast<char>('a' + row)));
        EXPECT_EQ(captions.size(), static_cast<std::size_t>(4 - row));
        EXPECT_EQ(CurrentRow("lstSelectedGroups"), row);
        EXPECT_EQ(desktop.boxes.back().text, "The group you selected does not exist.\r\nc");
    }
}

// What the tool tip tells of a search.
TEST_F(FindNowTest, HowFarItIs)
{
    frmTamarack mainForm;
    SearchProgress progress(mainForm, desktop);
    const auto shown = [] {
        auto& panel = Find<QLabel>("StatusBar1.Panels(3)");
        QHelpEvent hover(QEvent::ToolTip, {1, 1}, panel.mapToGlobal(QPoint(1, 1)));
        QApplication::sendEvent(&panel, &hover);
        return QToolTip::text().toStdString();
    };
    progress.Begin();
    progress.EnterGroup(1, 1000);
    EXPECT_EQ(shown(), "0 articles looked at, 0 fetched (0 kB), 0 stored\nThe rest of this group: not known yet");
    progress.LookAt(1000);
    progress.Fetched(99'999, 0);
    EXPECT_EQ(shown(), "1 article looked at, 1 fetched (99 kB), 0 stored\nThe rest of this group: about 0 seconds");
    progress.EnterGroup(7, 2'000'000'000);
    QTest::qWait(1);
    progress.LookAt(8);
    progress.Fetched(1'200'001, 1);
    EXPECT_THAT(shown(),
        testing::ContainsRegex("^2 articles looked at, 2 fetched .1.3 MB., 1 stored\n.*: about [0-9]+ hours$"));
}

TEST_F(FindNowTest, WhereAStopIsSeenAndWhereItIsLost)
{
    struct Row {
        std::string script;
        bool stored = false;
        const char* atCaption = nullptr; // asks for the stop in the yield behind this caption
    };
    const std::string refused = "S: 502 no\n", itsEndRefused = refused + itsEnd, itsEndStopped = stop + itsEnd;
    const std::string nextStat = "C: stat 6\nS: 223 6 <b>\nC: next\n" + noMore;
    const char* const scanning = "Scanning 6 of 9 -- alt.kites";
    const std::vector<Row> rows = {{enter + itsEndStopped}, {enter + itsEndRefused}, {entered + stop + nextStat},
        {entered + refused + nextStat}, {placed + itsEndStopped}, {placed + itsEndRefused},
        {asked + toBody + body + "C: next\n" + noMore, true, scanning}, {asked + itsEndStopped},
        {asked + "S: 221 6 <b>\nS: kite.jpg 1/1\n" + itsEndStopped}, {asked + itsEndRefused},
        {asked + toBody + itsEndStopped}, {asked + toBody + body.substr(0, body.size() - 5) + itsEndStopped},
        {asked + toBody + itsEndRefused},
        {asked + toBody + body + itsEnd, true, "Finished decoding 6 of 9 -- alt.kites"}};
    Start({"alt.kites", "alt.boats"}, 1);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.script);
        if (row.atCaption)
            atCaption[row.atCaption] = [] { AtNextYield([] { Click("cmdStop"); }); };
        SearchOn(row.script, [] { Click("cmdStop"); });
        const bool ended = row.script.ends_with(itsEnd);
        EXPECT_EQ(captions[captions.size() - 2] == "Entering group alt.boats", !ended);
        EXPECT_EQ(testing::Value(captions, testing::Contains("Decoding 6 of 9 -- alt.kites")), row.stored);
        EXPECT_EQ(FilesBelow(destination).size(), row.stored ? 1U : 0U);
        EXPECT_EQ(PanelText("StatusBar1", 2), row.stored ? "Items: 1" : "Items: 0");
        const bool wentOn = row.script.starts_with(moved);
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(wentOn ? 6 : 5, "alt.kites"));
    }
}

TEST_F(FindNowTest, AServerThatCountsWrongOrDoesNotMove)
{
    Start({"alt.kites", "alt.boats"}, 1);
    const std::string article = "C: head 6\nS: 221\nS: a\nS: .\nC: next\n" + noMore;
    for (const auto& [script, pointer] :
        std::vector<std::pair<std::string, int>>{// What next answers counts, not what the group is said to hold.
            {enter + "S: 211 3 6 7\nC: next\nS: 223 6 <b>\n" + article, 6},
            {enter + "S: 211 3 7 6 alt.kites\nC: next\nS: 223 6 <b>\n" + article, 6},
            // 420 to next counts as a success, and would do so for ever.
            {enter + "S: 211 0 10 9 alt.kites\nC: next\nS: 420 empty\n" + goesOn, 5},
            {placed + "S: 420 none\nC: head 5\nS: 420 none\nC: next\nS: 420 none\n" + goesOn, 5}}) {
        SCOPED_TRACE(script);
        SearchOn(script);
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(pointer, "alt.kites"));
    }
}

// What lies behind the new end is a group without a name.
TEST_F(FindNowTest, RowsRemovedDuringASearch)
{
    Start({"a", "b", "c", "d"}, 1);
    SearchOn("S: 200\nC: group a\nX: pause\nS: 411 no\nC: group c\nS: 411 no\nC: group d\nS: 411 no\n"
             "C~ group\\s\nS: 501 which?\nX: wait-close\n",
        [] { DoubleClickRow("lstSelectedGroups", 0); });
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("b", "c", "d"));
}
