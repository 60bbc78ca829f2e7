#include "demo/sample/Encoders.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/ScriptedServer.h"

#include <filesystem>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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
};

}

TEST_F(FindNowTest, WhatMustBeThere)
{
    const ScriptedServer server; // nobody is to connect
    Start({}, server.Port());
    Click("cmdFindNow");
    ASSERT_THAT(desktop.BoxTitles(), ElementsAre("Select Groups"));
    EXPECT_EQ(desktop.boxes[0].text,
        "You have not selected any newsgroups yet.\r\nYou must first filter out the groups you\r\nwant then "
        "double-click them from the\r\n'Filtered Groups' sub-tab.  Only groups in\r\nthe 'Selected Groups' sub-tab "
        "will be scanned.");
    EXPECT_EQ(CurrentTab("SSTMain"), 2);

    Start({"alt.kites", "alt.boats"}, server.Port());
    ClickRow("lstSelectedGroups", 1);
    std::filesystem::remove_all(destination);
    ChooseMenu("mnuFindNow");
    ASSERT_THAT(desktop.BoxTitles(), ElementsAre("Directory Error"));
    EXPECT_EQ(desktop.boxes[0].text,
        "The attachment directory you selected where \r\nfiles will be stored is no longer valid.  Please \r\nselect a "
        "new one then try again.");
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
    ASSERT_TRUE(Until([] { return PanelText("StatusBar1", 1) == "Status: Disconnected"; }));
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
