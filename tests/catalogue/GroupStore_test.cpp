#include "tests/catalogue/CatalogueTest.h"

#include "tests/support/ScriptedServer.h"

#include <QProgressBar>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class GroupStoreTest : public CatalogueTest {
protected:
    void Refresh(const std::string& script)
    {
        ScriptedServer server(script);
        server.OnPause = [](const std::string&) { Click("cmdStop"); };
        TypeInto("txtPort", std::to_string(server.Port()));
        Click("cmdStop"); // of nothing
        Click("cmdRefresh");
        EXPECT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
        const bool closes = script.ends_with("X: close\n");
        EXPECT_TRUE(Until([=] { return !closes || PanelText("StatusBar1", 1) == "Status: Disconnected"; }));
    }
};

const std::string greeting = "X: connect\nS: 200\nC: list\n";

}

TEST_F(GroupStoreTest, FromTheNetworkAndBackFromTheDisk)
{
    const std::string longest(504, 'x');
    Start({}, 1);
    // The farewell of one connection is nothing to the next.
    for (const char* end : {"X: packet\nS: 400 idle for too long\nX: close\n", "X: close\n"}) {
        Refresh(greeting + "S: 215 list\nS: b.two 9 1 y\nS: A.b 1 1 y\nS: xy 1 1 y\nS: nothing\nS:  9 1 y\nS: "
            + longest + " 1 1 y\nS: " + longest + "x 1 1 y\nS: .\n" + end);
        EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("A.b", "b.two", longest));
        EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 3");
        EXPECT_EQ(ContentOf(GroupFile()),
            "\"b.two 9 1 y\r\nA.b 1 1 y\r\nxy 1 1 y\r\nnothing\r\n 9 1 y\r\n" + longest + " 1 1 y\r\n" + longest
                + "x 1 1 y\"\r\n");
    }
    EXPECT_EQ(PanelText("StatusBar2", 4), "");
    MakeFile(GroupFile(), "\"\r\na.one 1 1 y\r\n\"c.three 1 1 y\"\r\n");
    Click("cmdRefreshDisk");
    EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("a.one")) << "a quote ends the field";
    EXPECT_THAT(desktop.boxes, IsEmpty());
    MakeFile(GroupFile(), "");
    Click("cmdRefreshDisk");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("The Tamarack"));
    EXPECT_THAT(RowsOf("lstAllGroups"), IsEmpty());
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 0");
    EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(GroupStoreTest, WhatARefreshThatDoesNotEndLeavesBehind)
{
    const std::string old = "\"old.one 1 1 y\"\r\n";
    Start({}, 1);
    MakeFile(GroupFile(), old);
    for (const char* reply : {"X: pause stop\n", "S: 215 list\nS: b.two 9 1 y\nX: pause stop\n", "S: 502 no\n"}) {
        SCOPED_TRACE(reply);
        Click("cmdRefreshDisk");
        Refresh(greeting + reply + "X: wait-close\n");
        EXPECT_THAT(RowsOf("lstAllGroups"), IsEmpty());
        EXPECT_EQ(ContentOf(GroupFile()), old);
    }
    EXPECT_TRUE(IsEnabled("cmdRefresh"));
    Click("cmdRefreshDisk");
    TypeInto("txtPort", "0");
    Click("cmdRefresh");
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error Connecting");
    EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("old.one")) << "without a connection nothing is cleared";
}

TEST_F(GroupStoreTest, AStopWhileTheListIsFilledLeavesItsStartAndTheWholeFile)
{
    Start({}, 1);
    std::string lines;
    for (const std::string& name : ManyNames(1000))
        lines += "S: " + ListOf({name}) + "\n";
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        if (PanelText("StatusBar2", 1) != "Total: 202")
            return;
        watch.stop();
        EXPECT_FALSE(IsVisible("lstAllGroups") || IsEnabled("cmdFindNow") || IsEnabled("cmdAddNewsServer"));
        Click("cmdStop");
    });
    watch.start(0);
    Refresh(greeting + "S: 215 list\n" + lines + "S: .\nX: wait-close\n");
    EXPECT_EQ(RowsOf("lstAllGroups").size(), 202U);
    EXPECT_EQ(ContentOf(GroupFile()), '"' + ListOf(ManyNames(1000)) + "\"\r\n");
    // A long list ends at the first progress point past its limit.
    MakeFile(GroupFile(), '"' + ListOf(ManyNames(33000)) + "\"\r\n");
    Click("cmdRefreshDisk");
    EXPECT_NEAR(static_cast<double>(RowsOf("lstAllGroups").size()), 32101, 100);
}

TEST_F(GroupStoreTest, TheStartUpLoadReadsEveryField)
{
    frmTamarack MainForm;
    NewsSession session(MainForm, desktop);
    session.AppDir = ProgramFile("");
    GroupStore store(MainForm, session, desktop);
    ProgressBar progress(MainForm, "ProgressBar1", {0, 0, 900, 300});
    Label activity(MainForm, "activity", "", {0, 0, 900, 300});
    const auto load = [&](const std::string& content) {
        MakeFile(store.FileName(), content);
        MainForm.lstAllGroups.Clear();
        store.LoadGroupsFromDisk(progress, activity);
        EXPECT_TRUE(content.empty() || Find<QProgressBar>("ProgressBar1").value() == static_cast<int>(content.size()));
        return MainForm.lstAllGroups.ListCount();
    };
    EXPECT_EQ(load("\"b.two 9 1 y\r\nab 1 1 y\"\r\n\"a.one 1 1 y\"\r\n"), 2);
    EXPECT_EQ(activity.Caption(), "Filling list box...");
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 2");
    // A quotation mark from a server makes a field of each line behind it; the list has its limit all the same.
    EXPECT_NEAR(load("\"a.\"one 1 1 y\r\n" + ListOf(ManyNames(70000)) + "\"\r\n"), 32000, 401);
    EXPECT_EQ(load(""), 0);
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("The Tamarack"));
}
