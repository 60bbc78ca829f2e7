#include "tests/shell/ProgramTest.h"

#include "catalogue/GroupText.h"
#include "tests/support/ScriptedServer.h"

#include <QTest>
#include <QTimer>

#include <filesystem>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> Names(std::string_view text)
{
    std::vector<std::string> names;
    GroupText lines(text);
    while (lines.NextLine()) {
        if (!lines.Name().empty())
            names.emplace_back(lines.Name());
    }
    return names;
}

class GroupStoreTest : public ProgramTest {
protected:
    std::string GroupFile() const { return ProgramFile("!@#!." + serverName); }

    void Refresh(const std::string& script)
    {
        ScriptedServer server(script);
        server.OnPause = [](const std::string& name) {
            if (name == "stop")
                Click("cmdStop");
        };
        TypeInto("txtPort", std::to_string(server.Port()));
        Click("cmdRefresh");
        EXPECT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
        EXPECT_TRUE(!script.ends_with("X: close\n")
            || Until([] { return PanelText("StatusBar1", 1) == "Status: Disconnected"; }));
    }
};

// The text of a list of so many groups.
std::string ManyGroups(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i > 0 ? "\r\n" : "") + ("alt.group" + std::to_string(i)) + " 2 1 y";
    return text;
}

const std::string greeting = "X: connect\nS: 200\nC: list\n";
const std::string groups = "S: 215 list\nS: b.two 9 1 y\nS: A.one 1 1 y\nS: xy 1 1 y\nS: .\n";

}

TEST(GroupTextTest, WhatALineGives)
{
    EXPECT_THAT(Names("alt.kites 9 1 y\r\nalt.boats 7 1 m"), ElementsAre("alt.kites", "alt.boats"));
    EXPECT_THAT(Names("\r\nalt.kites 9 1 y\r\n"), ElementsAre("alt.kites")) << "an empty line in front";
    EXPECT_THAT(Names("ab 9 1 y\r\na.b 9 1 y\r\na 1 1 y"), ElementsAre("a.b")) << "short names";
    EXPECT_THAT(Names("nothing\r\nalt.kites 9 1 y\r\nalt.last"), ElementsAre("alt.kites")) << "no blank in the line";
    EXPECT_THAT(Names(" 9 1 y\r\n\r\nalt.kites "), ElementsAre("alt.kites"));
    EXPECT_THAT(Names(std::string(505, 'x') + " 1 1 y\r\nalt.kites 9 1 y"), ElementsAre("alt.kites")) << "too long";
    EXPECT_THAT(Names(""), IsEmpty());
}

TEST_F(GroupStoreTest, FromTheNetworkAndBackFromTheDisk)
{
    Start({}, 1);
    // The farewell of one connection is nothing to the next.
    for (const char* end : {"X: packet\nS: 400 idle for too long\nX: close\n", "X: close\n"}) {
        Refresh(greeting + groups + end);
        EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("A.one", "b.two"));
        EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 2");
        EXPECT_EQ(ContentOf(GroupFile()), "\"b.two 9 1 y\r\nA.one 1 1 y\r\nxy 1 1 y\"\r\n");
    }
    EXPECT_EQ(PanelText("StatusBar2", 4), "");

    MakeFile(GroupFile(), "\"\r\na.one 1 1 y\r\n\"c.three 1 1 y\"\r\n");
    Click("cmdRefreshDisk");
    EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("a.one")) << "a quote ends the field";
    EXPECT_THAT(desktop.boxes, IsEmpty());
    for (const bool isThere : {true, false}) {
        SCOPED_TRACE(isThere);
        std::remove(GroupFile().c_str());
        if (isThere)
            MakeFile(GroupFile(), "");
        desktop.boxes.clear();
        Click("cmdRefreshDisk");
        ASSERT_THAT(desktop.BoxTitles(), ElementsAre("The Tamarack"));
        EXPECT_EQ(desktop.boxes[0].text,
            "The Selected News Server is empty.\r\nYou will need to REFRESH the groups\r\n"
            "from the NETWORK for this server.  Go to the \r\nNews Groups tab to do this.");
        EXPECT_THAT(RowsOf("lstAllGroups"), IsEmpty());
        EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 0");
        EXPECT_TRUE(IsEnabled("cmdFindNow"));
    }
}

// What comes behind the list, in its packet, while it is handed over or later, is nothing that anybody asked for.
TEST_F(GroupStoreTest, ARefreshBringsOneList)
{
    std::string more;
    for (int i = 0; i < 300; ++i)
        more += "S: c.three 1 1 y\nS: .\n";
    Start({}, 1);
    Refresh(greeting + groups + more + "X: packet\n" + more + "X: pause idle\n" + more + "X: close\n");
    EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("A.one", "b.two"));
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 2");
    EXPECT_EQ(ContentOf(GroupFile()), "\"b.two 9 1 y\r\nA.one 1 1 y\r\nxy 1 1 y\"\r\n");
}

TEST_F(GroupStoreTest, WhatARefreshThatDoesNotEndLeavesBehind)
{
    const std::string old = "\"old.one 1 1 y\"\r\n";
    Start({}, 1);
    MakeFile(GroupFile(), old);
    for (const std::string& script : {greeting + "X: pause stop\nX: wait-close\n",
             greeting + "S: 215 list\nS: b.two 9 1 y\nX: pause stop\nX: wait-close\n",
             greeting + "S: 502 no\nX: wait-close\n"}) {
        SCOPED_TRACE(script);
        Click("cmdRefreshDisk");
        EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("old.one"));
        Refresh(script);
        EXPECT_THAT(RowsOf("lstAllGroups"), IsEmpty());
        EXPECT_EQ(ContentOf(GroupFile()), old);
        EXPECT_TRUE(IsEnabled("cmdRefresh"));
    }
    Click("cmdRefreshDisk");
    TypeInto("txtPort", "0");
    Click("cmdRefresh");
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Error Connecting");
    EXPECT_THAT(RowsOf("lstAllGroups"), ElementsAre("old.one")) << "without a connection nothing is cleared";
}

TEST_F(GroupStoreTest, AButtonPressedByKeyHasTheFocusAgainWhenItIsDone)
{
    Start({}, 1);
    MakeFile(GroupFile(), "\"a.one 1 1 y\"\r\n");
    QWidget& window = *WindowNamed("frmTamarack");
    const auto press = [&](Qt::Key key) { QTest::keyClick(window.focusWidget(), key); };
    TypeInto("txtPort", "0");
    SelectTab("SSTMain", 3);
    SelectTab("SSTab1", 2);
    for (const bool moveOn : {false, true}) {
        SCOPED_TRACE(moveOn);
        desktop.whileBoxIsUp = [&](const TestDesktop::Box&) {
            EXPECT_FALSE(IsEnabled("cmdRefresh"));
            press(Qt::Key_Space);
            if (moveOn)
                press(Qt::Key_Tab);
        };
        Find<QWidget>("cmdRefresh").setFocus();
        press(Qt::Key_Space);
        EXPECT_TRUE(IsChecked("chkAutoLoad"));
        EXPECT_EQ(window.focusWidget() == &Find<QWidget>("cmdRefresh"), !moveOn);
    }
    EXPECT_EQ(desktop.boxes.size(), 2U);
}

TEST_F(GroupStoreTest, AStopWhileTheListIsFilledLeavesItsStartAndTheWholeFile)
{
    Start({}, 1);
    const std::string text = ManyGroups(1000);
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at = std::min(text.find('\n', at), text.size() - 1) + 1)
        lines += "S: " + text.substr(at, text.find('\r', at) - at) + "\n";
    bool busy = false;
    ScriptedServer server(greeting + "S: 215 list\n" + lines + "S: .\nX: wait-close\n");
    TypeInto("txtPort", std::to_string(server.Port()));
    QTimer watchList;
    QObject::connect(&watchList, &QTimer::timeout, [&] {
        if (PanelText("StatusBar2", 1) != "Total: 202")
            return;
        busy = busy || (!IsVisible("lstAllGroups") && !IsEnabled("cmdFindNow") && !IsEnabled("cmdAddNewsServer"));
        Click("cmdStop");
    });
    watchList.start(0);
    Click("cmdRefresh");
    watchList.stop();
    EXPECT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
    EXPECT_TRUE(busy);
    EXPECT_EQ(RowsOf("lstAllGroups").size(), 202U);
    EXPECT_EQ(ContentOf(GroupFile()), '"' + text + "\"\r\n");
    Click("cmdRefreshDisk");
    EXPECT_EQ(RowsOf("lstAllGroups").size(), 1000U);
}

TEST_F(GroupStoreTest, ALongListEndsAtTheFirstProgressPointPastItsLimit)
{
    Start({}, 1);
    MakeFile(GroupFile(), '"' + ManyGroups(33000) + "\"\r\n");
    Click("cmdRefreshDisk");
    const std::size_t shown = RowsOf("lstAllGroups").size();
    EXPECT_GT(shown, 32000U);
    EXPECT_LE(shown, 32201U);
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: " + std::to_string(shown));
}

TEST(GroupStoreLoadTest, TheStartUpLoadReadsEveryField)
{
    const TemporaryFolder folder;
    TestDesktop desktop;
    frmTamarack MainForm;
    NewsSession session(MainForm, desktop);
    GroupStore store(MainForm, session, desktop);
    ProgressBar progress(MainForm, "ProgressBar1", {0, 0, 900, 300});
    Label activity(MainForm, "activity", "", {0, 0, 900, 300});
    const std::string content = "\"b.two 9 1 y\r\nab 1 1 y\"\r\n\"a.one 1 1 y\"\r\n";
    MakeFile(folder.File("groups"), content);
    store.LoadGroupsFromDisk(folder.File("groups"), progress, activity);
    EXPECT_EQ(MainForm.lstAllGroups.ListCount(), 2);
    EXPECT_EQ(MainForm.lstAllGroups.List(0), "a.one");
    EXPECT_EQ(progress.Value(), static_cast<int>(content.size()));
    EXPECT_EQ(activity.Caption(), "Filling list box...");
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 2");
    // A quotation mark from a server makes a field of each line behind it; the list has its limit all the same.
    MainForm.lstAllGroups.Clear();
    MakeFile(folder.File("marked"), "\"a.\"one 1 1 y\r\n" + ManyGroups(70000) + "\"\r\n");
    store.LoadGroupsFromDisk(folder.File("marked"), progress, activity);
    EXPECT_NEAR(MainForm.lstAllGroups.ListCount(), 32000, 401);
    EXPECT_EQ(progress.Value(), std::filesystem::file_size(folder.File("marked")));
    MakeFile(folder.File("empty"), "");
    store.LoadGroupsFromDisk(folder.File("empty"), progress, activity);
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("The Tamarack"));
}
