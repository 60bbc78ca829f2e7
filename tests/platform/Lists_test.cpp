#include "demo/support/TemporaryFolder.h"
#include "platform/ComboBox.h"
#include "platform/DirectoryList.h"
#include "platform/FileList.h"
#include "platform/Frame.h"
#include "platform/ListBox.h"
#include "tests/platform/ControlsTest.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>

#include <filesystem>

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

class ListsTest : public ControlsTest {
protected:
    static std::string TipOf(const char* list, int row)
    {
        auto& view = Find<QAbstractItemView>(list);
        const QModelIndex index = view.model()->index(row, 0);
        view.scrollTo(index);
        const QPoint place = view.visualRect(index).topLeft() + QPoint(5, 5);
        QHelpEvent asked(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &asked);
        return asked.isAccepted() ? QToolTip::text().toStdString() : std::string();
    }

    Panel panel{window, "panel", {3000, 0, 3000, 4500}};
    ListBox list{window, "list", {0, 0, 2000, 1500}, {.extended = true, .hint = "Nothing yet"}};
    ListBox sorted{panel, "sorted", {0, 0, 2000, 1500}, {.sorted = true}};
};

}

TEST_F(ListsTest, AComboSelectsNothingByItself)
{
    ComboBox combo(window, "combo", {0, 2000, 2000, 300}, {"a", "b", "\xFFz"});
    EXPECT_EQ(combo.ListIndex(), -1);
    combo.SetListIndex(1);
    EXPECT_FALSE(combo.SelectText("d"));
    for (const int none : {-2, 3})
        combo.SetListIndex(none);
    combo.Click = countClick;
    for (const std::string current : {"b", ""}) {
        combo.AddItem("c");
        combo.RemoveItem(0);
        EXPECT_EQ(combo.Text(), current);
    }
    EXPECT_EQ(clicks, 0);
    combo.SetListIndex(0);
    EXPECT_EQ(combo.Text(), "\xFFz") << "the row keeps its bytes";
    QWheelEvent wheel({5, 5}, {5, 5}, {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&Find<QWidget>("combo"), &wheel);
    EXPECT_EQ(combo.ListIndex(), 0);
}

TEST_F(ListsTest, TheCurrentRowMovesOnlyWhenTold)
{
    list.AddItems({"a", "b", "c", "\xFFz"});
    list.Click = countClick;
    Show();
    list.SetFocus();
    EXPECT_EQ(list.ListIndex(), -1) << "focus does not pick a row";
    list.SetListIndex(2);
    list.SetListIndex(4);
    EXPECT_TRUE(HighlightedRows("list").empty()) << "the row with the focus is not highlighted by it";
    for (const int row : {0, 1, 9})
        list.SetSelected(row, true);
    list.SetSelected(1, false);
    list.InsertItem("before", 1);
    EXPECT_EQ(list.ListIndex(), 3);
    EXPECT_EQ(list.List(4) + list.List(5) + list.List(-1), "\xFFz") << "the row keeps its bytes";
    list.RemoveItem(3);
    EXPECT_EQ(list.ListIndex(), -1) << "the neighbour does not take over";
    EXPECT_THAT(HighlightedRows("list"), ElementsAre(0));
    EXPECT_EQ(clicks, 1);
    ClickRow("list", 1);
    ClickRow("list", 3, Qt::ControlModifier);
    list.SetFocus();
    EXPECT_EQ(list.ListIndex(), 3);
    EXPECT_THAT(HighlightedRows("list"), ElementsAre(1, 3));
    ClickRow("list", 2, Qt::ControlModifier);
    list.SetSelected(2, false);
    EXPECT_THAT(list.TakeSelected(), ElementsAre("before", "\xFFz"));
    EXPECT_EQ(list.List(list.ListIndex()), "b");
    list.InsertItem("first", -1);
    list.InsertItem("last", 99);
    EXPECT_THAT(RowsOf("list"), ElementsAre("first", "a", "b", "last"));
    list.SetListIndex(-1);
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(clicks, 4);
}

TEST_F(ListsTest, ASortedOneKeepsItsRowsOverAdditions)
{
    for (const char* text : {"m", "d", "M"})
        sorted.AddItem(text);
    sorted.SetListIndex(2);
    EXPECT_EQ(sorted.List(2), "m");
    sorted.Click = countClick;
    Show();
    for (const char* text : {"\xE4", "a", "B", "m"})
        sorted.AddItem(text);
    EXPECT_TRUE(Until([] { return RowsOf("sorted").size() == 7; }));
    EXPECT_THAT(RowsOf("sorted"), ElementsAre("a", "B", "d", "M", "m", "m", "\u00E4"));
    EXPECT_EQ(sorted.ListIndex(), 4);
    EXPECT_THAT(HighlightedRows("sorted"), ElementsAre(4));
    EXPECT_EQ(clicks, 0);
    sorted.SetSelected(1, true);
    EXPECT_THAT(HighlightedRows("sorted"), ElementsAre(1));
    sorted.SetListIndex(-1);
    EXPECT_TRUE(HighlightedRows("sorted").empty());

    // Behind another tab it goes on, but not while the program hides and fills it.
    panel.SetVisible(false);
    EXPECT_TRUE(sorted.Visible());
    sorted.AddItem("c");
    EXPECT_TRUE(Until([] { return RowsOf("sorted").size() == 8; }));
    sorted.SetVisible(false);
    sorted.AddItem("e");
    EXPECT_FALSE(Until([] { return RowsOf("sorted").size() == 9; }, 80ms));
    sorted.SetVisible(true);
    EXPECT_TRUE(Until([] { return RowsOf("sorted").size() == 9; }));
    sorted.AddItem("f");
    sorted.Clear();
    EXPECT_EQ(sorted.ListCount() + sorted.ListIndex(), -1);
}

TEST_F(ListsTest, WhatARowDoesNotShowIsTold)
{
    Show();
    QWidget& area = *Find<QAbstractItemView>("list").viewport();
    EXPECT_FALSE(Ink(area, area.rect()).isEmpty()) << "the hint";
    list.AddItem(" ");
    DoEvents();
    EXPECT_TRUE(Ink(area, area.rect()).isEmpty());
    list.SetToolTip("of the list");
    const std::string wide = "a <b>name</b> of " + std::string(200, 'w');
    list.AddItems({"short", wide});
    EXPECT_EQ(TipOf("list", 1), "of the list");
    EXPECT_EQ(TipOf("list", 2), "<qt>a &lt;b&gt;name&lt;/b&gt;" + wide.substr(13));
    EXPECT_GT(Find<QAbstractItemView>("list").horizontalScrollBar()->maximum(), 1000);
}

TEST_F(ListsTest, WhatIsADoubleClick)
{
    list.AddItem("a");
    list.DblClick = countClick;
    Show();
    auto& view = Find<QAbstractItemView>("list");
    const auto beside = [&](Qt::MouseButton button) {
        QTest::mouseDClick(view.viewport(), button, {}, QPoint(5, view.viewport()->height() - 5));
        return clicks;
    };
    EXPECT_EQ(beside(Qt::RightButton), 0);
    EXPECT_EQ(beside(Qt::LeftButton), 1) << "there is no current row";
    DoubleClickRow("list", 0);
    EXPECT_EQ(beside(Qt::LeftButton), 2);
    list.DeleteKey = countClick;
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Delete})
        QTest::keyClick(&view, key);
    EXPECT_EQ(clicks, 5);
    QTest::keyClick(&view, Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_EQ(clicks, 5);
}

TEST_F(ListsTest, DirectoriesAndTheirFiles)
{
    const TemporaryFolder folder;
    std::string deep = folder.Path();
    for (int level = 0; level < 40; ++level)
        deep += "d/";
    std::filesystem::create_directories(deep + "inside");
    for (const char* name : {"b.JPG", "A.jpg", "c.gif"})
        MakeFile(deep + name, "");
    DirectoryList directories(window, "Dir1", {0, 1600, 2800, 2800});
    FileList files(panel, "File1", {0, 1600, 1500, 900}, {".jpg"});
    directories.Change = files.PathChange = countClick;
    Show();
    for (const char* none : {"", "/no such place"})
        EXPECT_FALSE(directories.SetPath(none) || files.SetPath(none));
    for (const char* end : {"", "inside/../", "/"})
        ASSERT_TRUE(directories.SetPath(deep + end) && files.SetPath(deep));
    EXPECT_EQ(clicks, 2);
    const int open = directories.ListIndex();
    EXPECT_EQ(directories.List(open + 1), deep + "inside");
    EXPECT_EQ(TipOf("Dir1", 1) + TipOf("Dir1", open), "d") << "what is set in too far";
    EXPECT_THAT(RowsOf("File1"), ElementsAre("A.jpg", "b.JPG"));

    // Each level lies half a line to the right of the one above.
    ASSERT_TRUE(directories.SetPath(folder.Path() + "d/d"));
    auto& view = Find<QAbstractItemView>("Dir1");
    const auto edge = [&](int below) {
        const QRect row = view.visualRect(view.model()->index(directories.ListIndex() + below, 0));
        return Ink(*view.viewport(), row).boundingRect().right();
    };
    EXPECT_EQ(edge(1) - edge(-1), view.fontMetrics().height() / 2 * 2);
}
