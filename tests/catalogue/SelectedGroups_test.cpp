#include "tests/catalogue/CatalogueTest.h"

#include <QAbstractItemView>
#include <QTest>

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

using SelectedGroupsTest = CatalogueTest;

TEST_F(SelectedGroupsTest, WaysInAndOut)
{
    StartWith({"alt.a", "alt.b", "alt.c", "alt.d"});
    // Beside the rows.
    for (const char* list : {"lstAllGroups", "lstFilteredGroups", "lstSelectedGroups"}) {
        Click(list);
        QWidget* rows = Find<QAbstractItemView>(list).viewport();
        QTest::mouseDClick(rows, Qt::LeftButton, {}, rows->rect().bottomRight());
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("")) << list;
    }
    Click("cmdClearAll");
    Filter("cmdAndFilter", "alt");
    ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 4; }));
    DoubleClickRow("lstFilteredGroups", 3);
    EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 3");
    ClickRow("lstFilteredGroups", 0);
    ClickRow("lstFilteredGroups", 2, Qt::ControlModifier);
    Click("cmdSavePicks");
    EXPECT_THAT(RowsOf("lstFilteredGroups"), ElementsAre("alt.b"));
    EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 1");
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 3");
    DoubleClickRow("lstAllGroups", 1);
    TypeInto("txtManual", "  by.hand ");
    QTest::keyClick(&Find<QWidget>("txtManual"), Qt::Key_Return);
    TypeInto("txtManual", "   ");
    Click("Command3");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.d", "alt.a", "alt.c", "alt.b", "by.hand"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 5");

    DoubleClickRow("lstSelectedGroups", 1);
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 4");
    ClickRow("lstSelectedGroups", 0);
    ClickRow("lstSelectedGroups", 2, Qt::ControlModifier);
    Click("cmdClearSelected");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.c", "by.hand"));
    ClickRow("lstSelectedGroups", 1);
    QTest::keyClick(&Find<QWidget>("lstSelectedGroups"), Qt::Key_Delete);
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1");
    Click("cmdClearAll");
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 0");
}

TEST_F(SelectedGroupsTest, Moves)
{
    Start({"A", "B", "C"}, 1);
    struct Row {
        int button, current;
        const char* order;
        int highlighted;
    };
    for (const Row& row : {Row{2, -1, "ABC", -1}, {3, -1, "ABC", -1}, {0, 2, "ACB", 1}, {0, 0, "ACB", 0},
             {1, 0, "CAB", 1}, {1, 2, "CAB", 2}, {2, 2, "BCA", 2}, {3, 0, "CAB", 0}}) {
        if (row.current >= 0)
            ClickRow("lstSelectedGroups", row.current);
        Click("MyUpDown(" + std::to_string(row.button) + ")");
        const std::vector<std::string> rows = RowsOf("lstSelectedGroups");
        EXPECT_EQ(rows.at(0) + rows.at(1) + rows.at(2), row.order) << row.button;
        EXPECT_EQ(CurrentRow("lstSelectedGroups"), row.highlighted);
        EXPECT_EQ(HighlightedRows("lstSelectedGroups"), std::vector(row.highlighted < 0 ? 0 : 1, row.highlighted));
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
    MakeFile(SelectedFile(), "alt.b\xFCro\r\n  b  ,a\r\n\r\n\"x\" y\r\n\"open\r\nlast");
    Start();
    EXPECT_THAT(
        RowsOf("lstSelectedGroups"), ElementsAre("alt.b\xC3\xBCro", "b  ", "a", "", "\"x\" y", "\"open", "last"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 7");
    Click("Command1");
    EXPECT_EQ(ContentOf(SelectedFile()), "alt.b\xFCro\r\nb\r\na\r\n\"x\" y\r\n\"open\r\nlast\r\n");
}

TEST_F(SelectedGroupsTest, WhatCannotBeReadIsKeptAndBelongsToItsServer)
{
    settings.SaveSetting("Servers", "localhost", "1");
    for (const auto& [target, leave] : {std::pair("", false), {"", true}, {"nowhere", false}, {"nowhere", true},
             {"/proc/self/mem", false}, {"/proc/self/mem", true}}) {
        SCOPED_TRACE(std::string(target) + (leave ? ", another server chosen" : ""));
        fs::remove_all(SelectedFile());
        fs::remove(SelectedFile("localhost"));
        *target ? fs::create_symlink(target, SelectedFile()) : void(fs::create_directory(SelectedFile()));
        const fs::file_type before = fs::symlink_status(SelectedFile()).type();
        settings.SaveSetting("Servers", "Default", serverName);
        Start();
        if (leave)
            ChooseEntry("cboNewsServer", "localhost");
        TypeInto("txtManual", "alt.boats");
        Click("Command3");
        Click("Command1");
        EXPECT_EQ(fs::symlink_status(SelectedFile()).type(), before);
        EXPECT_EQ(ContentOf(SelectedFile("localhost")), leave ? "alt.boats\r\n" : "");
    }
}

TEST_F(SelectedGroupsTest, OnlyTheServerInUseAtTheEndIsWritten)
{
    settings.SaveSetting("Servers", "localhost", "1");
    const std::string kites = "  alt.kites\r\n";
    MakeFile(SelectedFile(), kites);
    Start();
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1"); // there was no file to count
    // A server that is chosen while the groups of another come.
    const std::string many = QByteArray("alt.many\r\n").repeated(500).toStdString();
    MakeFile(SelectedFile("localhost"), many);
    AtNextYield([] {
        EXPECT_EQ(RowsOf("lstSelectedGroups").size(), 1U);
        ChooseEntry("cboNewsServer", serverName);
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites"));
        ChooseEntry("cboNewsServer", "localhost");
    });
    program->MainWindow().cboNewsServer.Click();
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 500");
    Click("Command1");
    EXPECT_EQ(ContentOf(SelectedFile()), kites);
    EXPECT_EQ(ContentOf(SelectedFile("localhost")), many);
}
