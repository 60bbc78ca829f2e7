#include "tests/shell/ProgramTest.h"

#include <QAbstractItemView>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

class ChoosingTest : public ProgramTest {
protected:
    // Starts with these groups in the list of all groups.
    void StartWith(const std::string& names, const std::vector<std::string>& selected = {})
    {
        std::string text;
        for (std::size_t at = 0; at < names.size(); at = std::min(names.find(' ', at), names.size() - 1) + 1)
            text += (text.empty() ? "" : "\r\n") + names.substr(at, names.find(' ', at) - at) + " 2 1 y";
        MakeFile(ProgramFile("!@#!." + serverName), '"' + text + "\"\r\n");
        Start(selected, 1);
        Click("cmdRefreshDisk");
    }

    static void Filter(const char* button, const std::string& terms)
    {
        TypeInto("txtNewsGroups", terms);
        Click(button);
        Until([] { return PanelText("StatusBar2", 4).empty(); });
    }
};

}

TEST_F(ChoosingTest, Filters)
{
    struct Row {
        const char* terms;
        std::vector<std::string> withAll;
        std::vector<std::string> withAny;
    };
    StartWith("alt.pictures alt.kites rec.pictures Alt.x comp.os");
    for (const Row& row : {Row{"alt", {"alt.kites", "alt.pictures"}, {"alt.kites", "alt.pictures"}},
             Row{" alt ; pictures ;", {"alt.pictures"}, {"alt.kites", "alt.pictures", "alt.pictures", "rec.pictures"}},
             Row{";;x;", {"Alt.x"}, {"Alt.x"}}, Row{"os;os", {"comp.os"}, {"comp.os", "comp.os"}}, Row{"ALT", {}, {}},
             Row{"a b", {}, {}}, Row{" ; ;", {}, {}}, Row{"", {}, {}}}) {
        SCOPED_TRACE(row.terms);
        for (const bool all : {true, false}) {
            const std::vector<std::string>& hits = all ? row.withAll : row.withAny;
            Filter(all ? "cmdAndFilter" : "cmdOrFilter", row.terms);
            EXPECT_TRUE(Until([&] { return RowsOf("lstFilteredGroups") == hits; }));
            EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: " + std::to_string(hits.size()));
            EXPECT_EQ(IsEnabled("cmdSavePicks"), !hits.empty());
        }
    }
}

TEST_F(ChoosingTest, AFilterEndsOnAStopAndWhenItsListChanges)
{
    std::string names;
    for (int i = 0; i < 2000; ++i)
        names += (i > 0 ? " alt.group" : "alt.group") + std::to_string(i);
    settings.SaveSetting("Servers", "localhost", "1");
    settings.SaveSetting("Servers", "Default", serverName);
    settings.SaveSetting("Startup", "AutoLoad", "0");
    StartWith(names);
    for (const char* button : {"cmdAndFilter", "cmdOrFilter"}) {
        for (const char* interruption : {"cmdStop", "cmdRefreshDisk", "another server"}) {
            SCOPED_TRACE(std::string(button) + " " + interruption);
            const bool leave = interruption[0] == 'a';
            bool interrupted = false;
            QTimer watch;
            QObject::connect(&watch, &QTimer::timeout, [&] {
                if (!interrupted && PanelText("StatusBar2", 2) != "Filtered: 0") {
                    interrupted = true;
                    if (leave)
                        ChooseEntry("cboNewsServer", "localhost");
                    else
                        Click(interruption);
                }
            });
            Filter("cmdAndFilter", "none");
            watch.start(0);
            Filter(button, "alt;group");
            watch.stop();
            EXPECT_TRUE(interrupted);
            EXPECT_LT(RowsOf("lstFilteredGroups").size(), leave ? 1U : 2000U);
            EXPECT_EQ(IsEnabled("cmdSavePicks"), !leave);
            EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);
            ChooseEntry("cboNewsServer", serverName);
        }
    }
}

TEST_F(ChoosingTest, ASecondPressReplacesTheResultOfTheFirst)
{
    std::string names;
    for (int i = 0; i < 600; ++i)
        names += (i > 0 ? " alt.group" : "alt.group") + std::to_string(i);
    StartWith(names);
    struct Row {
        const char* terms;
        std::size_t hits;
    };
    for (const std::string first : {"cmdAndFilter", "cmdOrFilter"}) {
        for (const char* second : {"cmdAndFilter", "cmdOrFilter"}) {
            for (const Row& row : {Row{"group", 600}, Row{"none", 0}}) {
                SCOPED_TRACE(first + " " + second + " " + row.terms);
                bool pressed = false;
                QTimer user;
                QObject::connect(&user, &QTimer::timeout, [&] {
                    if (pressed || PanelText("StatusBar2", 2) == "Filtered: 0")
                        return;
                    pressed = true;
                    TypeInto("txtNewsGroups", row.terms);
                    Click(second);
                    // Nothing of the first run may change this.
                    program->MainWindow().StatusBar2.Panels(4).SetText("inner run's");
                });
                Filter("cmdAndFilter", "none");
                TypeInto("txtNewsGroups", "alt");
                user.start(0);
                Click(first);
                EXPECT_TRUE(pressed);
                EXPECT_EQ(PanelText("StatusBar2", 4), "inner run's");
                EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: " + std::to_string(row.hits));
                EXPECT_TRUE(Until([&] { return RowsOf("lstFilteredGroups").size() == row.hits; }));
                EXPECT_EQ(IsEnabled("cmdSavePicks"), row.hits > 0);
            }
        }
    }
}

TEST_F(ChoosingTest, AFilterThatIsStoppedAtOnceLeavesListAndCountAsTheyAre)
{
    StartWith("alt.a alt.b alt.c");
    for (const char* button : {"cmdAndFilter", "cmdOrFilter"}) {
        SCOPED_TRACE(button);
        Filter("cmdAndFilter", "alt");
        ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 3; }));
        DoubleClickRow("lstFilteredGroups", 0);
        AtNextYield([] { Click("cmdStop"); });
        Click(button);
        EXPECT_THAT(RowsOf("lstFilteredGroups"), ElementsAre("alt.b", "alt.c"));
        EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 2");
    }
}

TEST_F(ChoosingTest, WaysIntoTheSelectedGroups)
{
    StartWith("alt.a alt.b alt.c alt.d");
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
    EXPECT_TRUE(IsEnabled("cmdSavePicks"));
    DoubleClickRow("lstAllGroups", 1);
    QTest::keyClick(&Find<QAbstractItemView>("lstAllGroups"), Qt::Key_Return);
    TypeInto("txtManual", "  by.hand ");
    QTest::keyClick(&Find<QWidget>("txtManual"), Qt::Key_Return);
    TypeInto("txtManual", "   ");
    Click("Command3");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.d", "alt.a", "alt.c", "alt.b", "alt.b", "by.hand"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 6");
    EXPECT_EQ(RowsOf("lstAllGroups").size(), 4U);
}

TEST_F(ChoosingTest, ADoubleClickOnNoRow)
{
    StartWith("alt.a", {"a"});
    for (const char* list : {"lstAllGroups", "lstFilteredGroups", "lstSelectedGroups"}) {
        SCOPED_TRACE(list);
        Click(list);
        QWidget* rows = Find<QAbstractItemView>(list).viewport();
        QTest::mouseDClick(rows, Qt::LeftButton, {}, rows->rect().bottomRight());
        EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("a", ""));
        EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 2");
    }
    DoubleClickRow("lstAllGroups", 0);
    auto& selected = Find<QAbstractItemView>("lstSelectedGroups");
    ClickRow("lstSelectedGroups", 0);
    QTest::mouseDClick(selected.viewport(), Qt::RightButton, {}, QPoint(5, 5));
    QTest::mouseDClick(selected.viewport(), Qt::LeftButton, {}, selected.viewport()->rect().bottomRight());
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("a", "", "alt.a"));
}

TEST_F(ChoosingTest, WaysOutOfTheSelectedGroups)
{
    StartWith("alt.a", {"a", "b", "c", "d", "e"});
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
    QTest::keyClick(&Find<QAbstractItemView>("lstSelectedGroups"), Qt::Key_Return);
    Click("MyUpDown(2)");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), IsEmpty());
}

// However many rows were highlighted, each by itself, they go in one step.
TEST_F(ChoosingTest, ManyRowsGoAtOnce)
{
    std::vector<std::string> names;
    std::string text;
    for (int i = 1000; i < 2000; ++i) {
        names.push_back("alt.group" + std::to_string(i));
        text += (i > 1000 ? " " : "") + names.back();
    }
    StartWith(text, names);
    Filter("cmdAndFilter", "alt");
    ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 1000; }));
    for (const std::string list : {"lstFilteredGroups", "lstSelectedGroups"}) {
        SCOPED_TRACE(list);
        ClickRow(list, 601);
        auto& view = Find<QAbstractItemView>(list);
        std::vector<std::string> kept;
        for (int row = 0; row < 1000; ++row) {
            if (row % 2 == 0)
                view.selectionModel()->select(view.model()->index(row, 0), QItemSelectionModel::Select);
            else if (row != 601)
                kept.push_back(names[static_cast<std::size_t>(row)]);
        }
        ClickRow(list, 603, Qt::ControlModifier); // the current row
        ClickRow(list, 603, Qt::ControlModifier); // and not highlighted any more
        view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 4);
        const int place = view.verticalScrollBar()->value();
        int changes = 0;
        const auto count = [&changes] { ++changes; };
        QObject context;
        for (const char* one : {"lstFilteredGroups", "lstSelectedGroups"}) {
            const QAbstractItemModel* rows = Find<QAbstractItemView>(one).model();
            QObject::connect(rows, &QAbstractItemModel::rowsRemoved, &context, count);
            QObject::connect(rows, &QAbstractItemModel::rowsInserted, &context, count);
            QObject::connect(rows, &QAbstractItemModel::modelReset, &context, count);
        }
        Click(list == "lstFilteredGroups" ? "cmdSavePicks" : "cmdClearSelected");
        EXPECT_LE(changes, 2);
        const std::vector<std::string> left = RowsOf(list);
        EXPECT_EQ(left, kept);
        EXPECT_THAT(HighlightedRows(list), IsEmpty());
        EXPECT_EQ(left.at(static_cast<std::size_t>(CurrentRow(list))), names[603]);
        EXPECT_EQ(view.verticalScrollBar()->value(), place);
        if (list == "lstFilteredGroups") {
            EXPECT_EQ(RowsOf("lstSelectedGroups").size(), 1501U);
            EXPECT_EQ(RowsOf("lstSelectedGroups").back(), names[998]);
            Click("cmdClearAll");
            for (const std::string& name : names)
                program->MainWindow().lstSelectedGroups.AddItem(name);
        }
    }
}

TEST_F(ChoosingTest, Moves)
{
    struct Row {
        const char* button;
        int current;
        const char* order;
        int highlighted;
    };
    for (const Row& row : {Row{"MyUpDown(0)", 2, "ACB", 1}, Row{"MyUpDown(0)", 0, "ABC", 0},
             Row{"MyUpDown(1)", 0, "BAC", 1}, Row{"MyUpDown(1)", 2, "ABC", 2}, Row{"MyUpDown(2)", 2, "CAB", 2},
             Row{"MyUpDown(2)", 0, "ABC", 0}, Row{"MyUpDown(3)", 0, "BCA", 0}, Row{"MyUpDown(3)", 2, "ABC", 2},
             Row{"MyUpDown(0)", -1, "ABC", -1}, Row{"MyUpDown(3)", -1, "ABC", -1}}) {
        SCOPED_TRACE(std::string(row.button) + " on row " + std::to_string(row.current));
        StartWith("alt.a", {"A", "B", "C"});
        if (row.current >= 0)
            ClickRow("lstSelectedGroups", row.current);
        Click(row.button);
        std::string order;
        for (const std::string& name : RowsOf("lstSelectedGroups"))
            order += name;
        EXPECT_EQ(order, row.order);
        EXPECT_EQ(CurrentRow("lstSelectedGroups"), row.highlighted);
        EXPECT_EQ(HighlightedRows("lstSelectedGroups"),
            row.highlighted < 0 ? std::vector<int>{} : std::vector<int>{row.highlighted});
    }
}

TEST_F(ChoosingTest, PointersAreSetAndReset)
{
    StartWith("alt.a", {"alt.a", "alt.b"});
    const auto setPointer = [](int row, const char* typed, const char* button) {
        std::string shown;
        QTimer::singleShot(0, [&] {
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
    ASSERT_EQ(desktop.boxes.size(), 2U);
    EXPECT_EQ(desktop.boxes[0].text + "|" + desktop.boxes[0].title, "You must select a group first|Error");
    EXPECT_EQ(desktop.boxes[1].text + "|" + desktop.boxes[1].title, "You must first select a group|Tamarack");

    EXPECT_EQ(setPointer(0, "12", "cmdOk(1)"), "alt.a 0");
    EXPECT_THAT(FilesBelow(ProgramFile("")), testing::Not(testing::Contains("@!!#." + serverName)));
    EXPECT_EQ(setPointer(1, "70000.5 and more", "cmdOk(0)"), "alt.b 0");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(70000, "alt.b"));
    EXPECT_EQ(setPointer(0, "-5", "cmdOk(0)"), "alt.a 0");
    EXPECT_EQ(setPointer(0, "99999999999", "cmdOk(0)"), "alt.a -5");
    EXPECT_EQ(setPointer(1, "x", "cmdOk(1)"), "alt.b 70000");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(70000, "alt.b") + PointerRecord(0, "alt.a"));

    ClickRow("lstSelectedGroups", 1);
    Click("cmdResetGroup");
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(0, "alt.b") + PointerRecord(0, "alt.a"));
    EXPECT_EQ(CurrentRow("lstSelectedGroups"), -1);
    EXPECT_THAT(HighlightedRows("lstSelectedGroups"), IsEmpty());
}
