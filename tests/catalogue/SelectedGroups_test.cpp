#include "tests/catalogue/CatalogueTest.h"
#include "tests/shell/ProgramTest.h"

#include <QAbstractItemView>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

using SelectedGroupsTest = CatalogueTest;

TEST_F(SelectedGroupsTest, WaysIn)
{
    StartWith({"alt.a", "alt.b", "alt.c", "alt.d"});
    Filter("cmdAndFilter", "alt");
    ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 4; }));
    DoubleClickRow("lstFilteredGroups", 3);
    EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 3");
    Click("cmdSavePicks");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.d"));
    ClickRow("lstFilteredGroups", 0);
    ClickRow("lstFilteredGroups", 2, Qt::ControlModifier);
    Click("cmdSavePicks");
    EXPECT_THAT(RowsOf("lstFilteredGroups"), ElementsAre("alt.b"));
    EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 1");
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 3");
    EXPECT_TRUE(IsEnabled("cmdSavePicks"));
    DoubleClickRow("lstAllGroups", 1);
    TypeInto("txtManual", "  by.hand ");
    QTest::keyClick(&Find<QWidget>("txtManual"), Qt::Key_Return);
    TypeInto("txtManual", "   ");
    Click("Command3");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.d", "alt.a", "alt.c", "alt.b", "by.hand"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 5");
    EXPECT_EQ(RowsOf("lstAllGroups").size(), 4U);
}

TEST_F(SelectedGroupsTest, ADoubleClickOnNoRow)
{
    StartWith({"alt.a"}, {"a"});
    for (const char* list : {"lstAllGroups", "lstFilteredGroups", "lstSelectedGroups"}) {
        SCOPED_TRACE(list);
        Click(list);
        QWidget* rows = Find<QAbstractItemView>(list).viewport();
        QTest::mouseDClick(rows, Qt::LeftButton, {}, rows->rect().bottomRight());
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("a", ""));
        EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 2");
    }
    ClickRow("lstSelectedGroups", 0);
    QWidget* rows = Find<QAbstractItemView>("lstSelectedGroups").viewport();
    QTest::mouseDClick(rows, Qt::RightButton, {}, QPoint(5, 5));
    QTest::mouseDClick(rows, Qt::LeftButton, {}, rows->rect().bottomRight());
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("a", ""));
}

TEST_F(SelectedGroupsTest, WaysOut)
{
    StartWith({"alt.a"}, {"a", "b", "c", "d", "e"});
    DoubleClickRow("lstSelectedGroups", 1);
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 4");
    ClickRow("lstSelectedGroups", 0);
    ClickRow("lstSelectedGroups", 2, Qt::ControlModifier);
    Click("cmdClearSelected");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("c", "e"));
    ClickRow("lstSelectedGroups", 1);
    QTest::keyClick(&Find<QAbstractItemView>("lstSelectedGroups"), Qt::Key_Delete);
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1");
    Click("cmdClearAll");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), IsEmpty());
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 0");
}

// However many rows were highlighted, each by itself, they go in one step.
TEST_F(SelectedGroupsTest, ManyRowsGoAtOnce)
{
    StartWith({}, ManyNames(1000));
    auto& view = Find<QAbstractItemView>("lstSelectedGroups");
    ClickRow("lstSelectedGroups", 1);
    for (int row = 0; row < 1000; row += 2)
        view.selectionModel()->select(view.model()->index(row, 0), QItemSelectionModel::Select);
    ClickRow("lstSelectedGroups", 603, Qt::ControlModifier); // the current row
    ClickRow("lstSelectedGroups", 603, Qt::ControlModifier); // and not highlighted any more
    const int place = view.verticalScrollBar()->maximum() / 4;
    view.verticalScrollBar()->setValue(place);
    int changes = 0;
    QObject context;
    QObject::connect(view.model(), &QAbstractItemModel::rowsRemoved, &context, [&] { ++changes; });
    QObject::connect(view.model(), &QAbstractItemModel::modelReset, &context, [&] { ++changes; });
    Click("cmdClearSelected");
    EXPECT_EQ(changes, 1);
    const std::vector<std::string> kept = RowsOf("lstSelectedGroups");
    ASSERT_EQ(kept.size(), 499U);
    for (std::size_t row = 0; row < kept.size(); ++row)
        EXPECT_EQ(kept[row], "alt.group" + std::to_string(2 * row + 3));
    EXPECT_THAT(HighlightedRows("lstSelectedGroups"), IsEmpty());
    EXPECT_EQ(CurrentRow("lstSelectedGroups"), 300);
    EXPECT_EQ(view.verticalScrollBar()->value(), place);
}

TEST_F(SelectedGroupsTest, Moves)
{
    struct Row {
        const char* button;
        int current;
        const char* order;
        std::vector<int> highlighted;
    };
    for (const Row& row : {Row{"MyUpDown(0)", 2, "ACB", {1}}, Row{"MyUpDown(0)", 0, "ABC", {0}},
             Row{"MyUpDown(1)", 0, "BAC", {1}}, Row{"MyUpDown(1)", 2, "ABC", {2}}, Row{"MyUpDown(2)", 2, "CAB", {2}},
             Row{"MyUpDown(3)", 0, "BCA", {0}}, Row{"MyUpDown(2)", -1, "ABC", {}}, Row{"MyUpDown(3)", -1, "ABC", {}}}) {
        SCOPED_TRACE(std::string(row.button) + " on row " + std::to_string(row.current));
        Start({"A", "B", "C"}, 1);
        if (row.current >= 0)
            ClickRow("lstSelectedGroups", row.current);
        Click(row.button);
        std::string order;
        for (const std::string& name : RowsOf("lstSelectedGroups"))
            order += name;
        EXPECT_EQ(order, row.order);
        EXPECT_EQ(CurrentRow("lstSelectedGroups"), row.highlighted.empty() ? -1 : row.highlighted[0]);
        EXPECT_EQ(HighlightedRows("lstSelectedGroups"), row.highlighted);
    }
}

TEST_F(SelectedGroupsTest, PointersAreSetAndReset)
{
    Start({"alt.a", "alt.b"}, 1);
    const auto setPointer = [](int row, const char* typed, const char* button) {
        std::string shown;
        WhenUp("frmSetPointer", [&] {
            shown = TextOf("frmSetPointer/Text2") + " " + TextOf("frmSetPointer/Text1");
            TypeInto("frmSetPointer/Text1", typed);
            Click(button);
        });
        ClickRow("lstSelectedGroups", row);
        Click("Command4");
        return shown;
    };
    Click("Command4");
    Click("cmdResetGroup");
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Error", "Tamarack"));

    EXPECT_EQ(setPointer(0, "12", "cmdOk(1)"), "alt.a 0");
    EXPECT_FALSE(fs::exists(PointerFile()));
    EXPECT_EQ(setPointer(1, "70000.5 and more", "cmdOk(0)"), "alt.b 0");
    EXPECT_EQ(setPointer(0, "-5", "cmdOk(0)"), "alt.a 0");
    EXPECT_EQ(setPointer(0, "99999999999", "cmdOk(0)"), "alt.a -5");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(70000, "alt.b") + PointerRecord(0, "alt.a"));

    ClickRow("lstSelectedGroups", 1);
    Click("cmdResetGroup");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(0, "alt.b") + PointerRecord(0, "alt.a"));
    EXPECT_EQ(CurrentRow("lstSelectedGroups"), -1);
    EXPECT_THAT(HighlightedRows("lstSelectedGroups"), IsEmpty());
}

TEST_F(SelectedGroupsTest, FileAndList)
{
    struct Row {
        const char* what;
        const char* file;
        std::vector<std::string> rows;
        const char* written; // at the end of the program
    };
    for (const Row& row : {Row{"bytes of another time", "alt.b\xFCro\r\n", {"alt.b\xC3\xBCro"}, "alt.b\xFCro\r\n"},
             Row{"fields", "  b  ,a\r\n\r\n\"x\" y\r\n\"open\r\nlast", {"b  ", "a", "", "\"x\" y", "\"open", "last"},
                 "b\r\na\r\n\"x\" y\r\n\"open\r\nlast\r\n"},
             Row{"empty", "", {}, ""}}) {
        SCOPED_TRACE(row.what);
        MakeFile(SelectedFile(), row.file);
        Start();
        EXPECT_EQ(RowsOf("lstSelectedGroups"), row.rows);
        EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: " + std::to_string(row.rows.size()));
        EXPECT_EQ(ContentOf(SelectedFile()), row.file);
        Click("Command1");
        EXPECT_EQ(ContentOf(SelectedFile()), row.written);
    }
}

TEST_F(SelectedGroupsTest, WhatCannotBeReadIsKeptAndBelongsToItsServer)
{
    settings.SaveSetting("Servers", "localhost", "1");
    for (const std::string what : {"directory", "link that leads nowhere", "pipe", "file that cannot be read on"}) {
        for (const bool leave : {false, true}) {
            SCOPED_TRACE(what + (leave ? ", another server chosen" : ""));
            fs::remove_all(SelectedFile());
            fs::remove(SelectedFile("localhost"));
            if (what == "directory")
                fs::create_directory(SelectedFile());
            else if (what == "pipe")
                ASSERT_EQ(mkfifo(SelectedFile().c_str(), 0600), 0);
            else
                fs::create_symlink(what[0] == 'l' ? "nowhere" : "/proc/self/mem", SelectedFile());
            const fs::file_type before = fs::symlink_status(SelectedFile()).type();
            Start();
            if (leave)
                ChooseEntry("cboNewsServer", "localhost");
            TypeInto("txtManual", "alt.boats");
            Click("Command3");
            Click("Command1");
            EXPECT_EQ(fs::symlink_status(SelectedFile()).type(), before);
            EXPECT_EQ(ContentOf(SelectedFile("localhost")), leave ? "alt.boats\r\n" : "");
            settings.SaveSetting("Servers", "Default", serverName);
        }
    }
}

TEST_F(SelectedGroupsTest, OnlyTheServerInUseAtTheEndIsWritten)
{
    settings.SaveSetting("Servers", "localhost", "1");
    std::string many;
    for (int i = 0; i < 500; ++i)
        many += "alt.many\r\n";
    const std::string kites = "  alt.kites\r\n";
    MakeFile(SelectedFile(), kites);
    Start();
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), IsEmpty());
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1"); // there was no file to count
    Click("Command1");
    EXPECT_EQ(ContentOf(SelectedFile()), kites);
    EXPECT_TRUE(fs::exists(SelectedFile("localhost")));

    // A server that is chosen while the groups of another come.
    MakeFile(SelectedFile("localhost"), many);
    settings.SaveSetting("Servers", "Default", serverName);
    Start();
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (RowsOf("lstSelectedGroups").size() < 5)
            return;
        user.stop();
        ChooseEntry("cboNewsServer", serverName);
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites"));
        ChooseEntry("cboNewsServer", "localhost");
    });
    user.start(0);
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_TRUE(Until([&] { return !user.isActive(); }));
    EXPECT_EQ(RowsOf("lstSelectedGroups").size(), 500U);
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 500");
    Click("Command1");
    EXPECT_EQ(ContentOf(SelectedFile()), kites);
    EXPECT_EQ(ContentOf(SelectedFile("localhost")), many);
}
