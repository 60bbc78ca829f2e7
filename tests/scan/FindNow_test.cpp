#include "demo/sample/Encoders.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/ScriptedServer.h"

#include <filesystem>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

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

// "S:" lines of a script.
std::string Said(const std::string& text)
{
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
        lines += "S: " + text.substr(at, text.find('\r', at) - at) + "\n";
    return lines;
}

// A conversation, step by step, on a group whose pointer stands on 5.
const std::string enter = "X: connect\nS: 200\nC: group alt.kites\n";
const std::string entered = enter + "S: 211 9 1 9 alt.kites\nC: stat 5\n";
const std::string placed = entered + "S: 223 5 <a>\nC: next\n";
const std::string moved = placed + "S: 223 6 <b>\n";
const std::string asked = moved + "C: head 6\n";
const std::string toBody = "S: 221 6 <b>\nS: Path: a\nS: Subject: kite.jpg (1/1)\nS: .\nC: body 6\n";
const std::string body = "S: 222 6 <b>\n" + Said(Uuencode("red", "kite.jpg")) + "S: .\n";
const std::string stop = "X: pause stop\n";

const std::string itsEnd = "X: wait-close\n"; // the search is over
const std::string goesOn = "C: group alt.boats\nS: 411 no such group\nX: close\n"; // it is not
const std::string noMore = "S: 421 no more\n" + goesOn;

}

TEST_F(FindNowTest, WhatMustBeThere)
{
    const ScriptedServer server; // nobody is to connect
    Start({}, server.Port());
    Click("cmdFindNow");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Select Groups"));
    EXPECT_EQ(CurrentTab("SSTMain"), 2);

    Start({"alt.kites", "alt.boats"}, server.Port());
    ClickRow("lstSelectedGroups", 1);
    std::filesystem::remove_all(destination);
    ChooseMenu("mnuFindNow");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Directory Error"));
    EXPECT_EQ(CurrentTab("SSTMain"), 0);
    EXPECT_EQ(CurrentRow("lstSelectedGroups"), 1);
    ExpectBusy(false);
    EXPECT_EQ(server.FirstProblem(), "");
}

TEST_F(FindNowTest, ControlsDuringASearch)
{
    ScriptedServer server("S: 200\nC: group alt.kites\nX: pause\nS: 411 no\nX: close\n");
    server.OnPause = [&](const std::string&) {
        ExpectBusy(true);
        Click("cmdFindNow");
        ChooseMenu("mnuFindNow");
    };
    Start({"alt.kites"}, server.Port());
    Click("cmdStop"); // a stop before a search is none
    ChooseMenu("mnuFindNow");
    ExpectBusy(false);
    EXPECT_EQ(server.FirstProblem(), "");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Invalid News Group"));

    // Nobody answers any more.
    ExpectGone();
    server.StopListening();
    Search();
    EXPECT_EQ(desktop.boxes.back().title, "Connection Error");
    EXPECT_THAT(captions, IsEmpty());
    ExpectBusy(false);

    // The greeting is a refusal, which only shows when the groups are entered.
    const ScriptedServer refusing("S: 502 no\nX: wait-close\n");
    TypeInto("txtPort", std::to_string(refusing.Port()));
    Search();
    EXPECT_THAT(captions, ElementsAre("Entering group alt.kites", frmTamarack::idleCaption));
    ExpectBusy(false);
}

// What lies on disk at that moment is all that stays.
TEST_F(FindNowTest, ExitInTheMiddle)
{
    const std::string body = Uuencode("blue", "boat.jpg") + Uuencode("green", "cat.jpg");
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "kite.jpg"), body})});
    Start({"alt.kites"}, server.Port());
    TypeInto("txtNamed", "changed");
    atCaption["Finished decoding 3 of 3 -- alt.kites"] = [&] {
        EXPECT_EQ(ContentOf(destination + "article3.uue"), "\r\n" + body);
        EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/kite.jpg", "article3.uue", "boat.jpg", "cat.jpg"));
        AtNextYield([] { Click("Command1"); });
    };
    desktop.atEndProgram = [&] {
        EXPECT_EQ(settings.GetSetting("Startup", "6"), "changed");
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.kites\r\n");
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(3, "alt.kites"));
        // What was in hand has come to its place.
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
    // Only the attachment that was stored is counted, and each search counts from 0.
    for (const char* caption : {"Setting group pointers: 0", "Finished decoding 2 of 3 -- alt.kites"})
        atCaption[caption] = [] { EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0"); };
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1");
    EXPECT_THAT(captions,
        ElementsAre("Entering group alt.kites", "Setting group pointers: 0", "Scanning 2 of 3 -- alt.kites",
            "Getting 2 of 3 -- alt.kites", "Decoding 2 of 3 -- alt.kites", "Finished decoding 2 of 3 -- alt.kites",
            "Scanning 3 of 3 -- alt.kites", "Getting 3 of 3 -- alt.kites", "Decoding 3 of 3 -- alt.kites",
            "Finished decoding 3 of 3 -- alt.kites", "alt.kites -- No more new articles", "Entering group alt.none",
            "Entering group alt.boats", "Setting group pointers: 0", "alt.boats -- No more new articles",
            frmTamarack::idleCaption));
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Invalid News Group"));
    EXPECT_THAT(desktop.sleeps, ElementsAre(1500ms, 1500ms));
    atCaption["Setting group pointers: 3"] = [] { EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0"); };
    Search();
}

TEST_F(FindNowTest, BeginsAtTheCurrentRow)
{
    const std::vector<std::string> groups = {"a", "b", "c", "d", "e"};
    SampleServer server({});
    Start(groups, server.Port());
    for (const int row : {2, 0, 4}) {
        ClickRow("lstSelectedGroups", row);
        desktop.boxes.clear();
        Search();
        std::vector<std::string> entered;
        for (const TestDesktop::Box& box : desktop.boxes)
            entered.push_back(box.text.substr(box.text.find('\n') + 1));
        EXPECT_THAT(entered, ElementsAreArray(groups.begin() + row, groups.end()));
        EXPECT_EQ(CurrentRow("lstSelectedGroups"), row);
    }
}

TEST_F(FindNowTest, WhereAStopIsSeenAndWhereItIsLost)
{
    struct Row {
        std::string script;
        bool stored = false;
        const char* atCaption = nullptr; // asks for the stop in the yield behind this caption
        const char* mode = "chkSingleParts";
    };
    const std::string refused = "S: 502 no\n", itsEndRefused = refused + itsEnd, itsEndStopped = stop + itsEnd;
    const std::string nextStat = "C: stat 6\nS: 223 6 <b>\nC: next\n" + noMore;
    const char* const scanning = "Scanning 6 of 9 -- alt.kites";
    const std::vector<Row> rows = {{enter + itsEndStopped}, {enter + itsEndRefused}, {entered + stop + nextStat},
        {entered + refused + nextStat}, {placed + itsEndStopped}, {placed + itsEndRefused},
        {asked + toBody + body + "C: next\n" + noMore, true, scanning},
        {moved + itsEnd, false, scanning, "chkAllArticles"}, {asked + itsEndStopped},
        {asked + "S: 221 6 <b>\nS: kite.jpg 1/1\n" + itsEndStopped}, {asked + itsEndRefused},
        {asked + toBody + itsEndStopped}, {asked + toBody + body.substr(0, body.size() - 5) + itsEndStopped},
        {asked + toBody + itsEndRefused},
        {asked + toBody + body + itsEnd, true, "Finished decoding 6 of 9 -- alt.kites"}};
    Start({"alt.kites", "alt.boats"}, 1);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.script);
        Check(row.mode, true);
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

TEST_F(FindNowTest, LostConnection)
{
    Start({"alt.kites", "alt.boats", "alt.cats"}, 1);
    for (const bool insideGroup : {true, false}) {
        SCOPED_TRACE(insideGroup);
        Forget(PointerRecord(5, "alt.kites"));
        ScriptedServer server(insideGroup ? moved : placed + "S: 421 no more\n");
        TypeInto("txtPort", std::to_string(server.Port()));
        const auto lose = [&] {
            server.Play("X: close\n");
            ExpectGone();
        };
        if (insideGroup)
            atCaption["Scanning 6 of 9 -- alt.kites"] = lose;
        desktop.whileAsleep = [&](std::chrono::milliseconds) {
            if (!insideGroup)
                lose();
        };
        Search();
        EXPECT_EQ(server.FirstProblem(), "");
        ASSERT_GE(captions.size(), 4U);
        EXPECT_THAT(std::vector(captions.end() - 4, captions.end()),
            ElementsAre("alt.kites -- No more new articles", "Entering group alt.boats", "Entering group alt.cats",
                frmTamarack::idleCaption));
    }
}

// Rows that go during a search do not end it early: what lies behind the new end is a group without a name.
TEST_F(FindNowTest, RowsRemovedDuringASearch)
{
    Start({"a", "b", "c", "d"}, 1);
    SearchOn("S: 200\nC: group a\nX: pause\nS: 411 no\nC: group c\nS: 411 no\nC: group d\nS: 411 no\n"
             "C~ group\\s\nS: 501 which?\nX: wait-close\n",
        [] { DoubleClickRow("lstSelectedGroups", 0); });
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("b", "c", "d"));
}
