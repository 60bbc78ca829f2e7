#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Buttons.h"
#include "platform/ComboBox.h"
#include "platform/DirectoryList.h"
#include "platform/Events.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/ListBox.h"
#include "platform/Menu.h"
#include "platform/Screen.h"
#include "platform/StatusBar.h"
#include "platform/Stepper.h"
#include "platform/TabStrip.h"
#include "platform/Timer.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QAction>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QLineEdit>
#include <QTest>
#include <QToolTip>

#include <filesystem>

using namespace std::chrono_literals;

namespace {

struct Window : Form {
    Window()
        : Form("frmTest", "Test", {.clientWidth = 6000, .clientHeight = 4000})
    {
    }
    Menu mnuFile{*this, "mnuFile", "&File"};
    MenuEntry mnuMark{mnuFile, "mnuMark", "Mark"};
    CheckBox chkOne{*this, "chkOne", "One", {0, 0, 900, 300}};
    OptionButton chkFirst{*this, "chkFirst", "First", {1000, 0, 900, 300}, true};
    OptionButton chkSecond{*this, "chkSecond", "Second", {2000, 0, 900, 300}};
    ComboBox cboNames{*this, "cboNames", {0, 400, 2000, 300}};
    TextBox txtNumber{*this, "txtNumber", {0, 800, 900, 300}, {.text = "10", .maxLength = 4}};
    Stepper udNumber{*this, "udNumber", txtNumber, {900, 800, 300, 300}, {.minimum = 1, .maximum = 12, .step = 1}};
    ListBox lstPlain{*this, "lstPlain", {0, 1200, 2000, 1500}, {.extended = true, .hint = "Nothing yet"}};
    ListBox lstSorted{*this, "lstSorted", {2000, 1200, 2000, 1500}, {.sorted = true}};
    Panel SSPanel1{*this, "SSPanel1", {4000, 1200, 1500, 1500}};
    CommandButton cmdInside{SSPanel1, "cmdInside", "Inside", {0, 0, 900, 300}};
    StatusBar StatusBar1{*this, "StatusBar1", {0, 3700, 6000, 300},
        {{"", "one", "Tip", PanelStyle::Text, true}, {"two", "two"}}, StatusBarPlace::BottomEdge};
};

class ControlsTest : public testing::Test {
protected:
    ControlsTest()
    {
        window.SetVisible(true);
        DoEvents();
    }

    Window window;
    int clicks = 0;
    const std::function<void()> countClick = [this] { ++clicks; };
};

std::string TipOf(const char* list, int row)
{
    auto& view = Find<QAbstractItemView>(list);
    const QModelIndex index = view.model()->index(row, 0);
    view.scrollTo(index);
    const QPoint place = view.visualRect(index).topLeft() + QPoint(5, 5);
    QHelpEvent asked(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
    QApplication::sendEvent(view.viewport(), &asked);
    return asked.isAccepted() ? QToolTip::text().toStdString() : std::string();
}

}

TEST_F(ControlsTest, ValuesSetFromCodeRaiseClickOnlyWhenTheyChange)
{
    window.chkOne.Click = countClick;
    window.chkOne.SetValue(1);
    window.chkOne.SetValue(1);
    EXPECT_EQ(clicks, 1);
    Click("chkOne");
    EXPECT_EQ(clicks, 2);
    EXPECT_EQ(window.chkOne.Value(), 0);

    window.chkFirst.Click = countClick;
    window.chkSecond.Click = countClick;
    window.chkSecond.SetValue(true);
    EXPECT_EQ(clicks, 3) << "the option that lost the selection raises nothing";
    EXPECT_FALSE(window.chkFirst.Value());
    window.chkSecond.SetValue(false);
    EXPECT_FALSE(window.chkSecond.Value());
    Click("chkFirst");
    Click("chkFirst");
    EXPECT_EQ(clicks, 4);

    // A check mark is for the handler to set.
    window.mnuMark.SetChecked(false);
    window.mnuMark.Click = countClick;
    ChooseMenu("mnuMark");
    EXPECT_EQ(clicks, 5);
    EXPECT_FALSE(window.mnuMark.Checked());
}

TEST_F(ControlsTest, AComboSelectsNothingByItself)
{
    ComboBox& combo = window.cboNames;
    combo.Click = countClick;
    for (const char* text : {"a", "b", "\xFFz"})
        combo.AddItem(text);
    EXPECT_EQ(combo.ListIndex(), -1);
    EXPECT_EQ(combo.Text(), "");
    combo.SetListIndex(1);
    EXPECT_TRUE(combo.SelectText("b"));
    EXPECT_FALSE(combo.SelectText("c"));
    combo.RemoveItem(0);
    EXPECT_EQ(combo.Text(), "b");
    combo.RemoveItem(0);
    EXPECT_EQ(combo.ListIndex(), -1);
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(combo.SelectText("\xFFz"));
    EXPECT_EQ(combo.Text(), "\xFFz") << "the row keeps its bytes";
    combo.AddItem("a");
    ChooseEntry("cboNames", "a");
    EXPECT_EQ(clicks, 3);
    QWidget& widget = Find<QWidget>("cboNames");
    QWheelEvent wheel({5, 5}, widget.mapToGlobal(QPointF(5, 5)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &wheel);
    EXPECT_EQ(combo.Text(), "a");
}

TEST_F(ControlsTest, ATextKeepsItsBytesUntilItIsEdited)
{
    TextBox& field = window.txtNumber;
    field.Change = countClick;
    field.SetText("\xFF\x80");
    field.SetText("\xFF\x80");
    EXPECT_EQ(field.Text(), "\xFF\x80");
    EXPECT_EQ(TextOf("txtNumber"), "\xC3\xBF\xE2\x82\xAC") << "shown as Windows-1252";
    EXPECT_EQ(clicks, 1);
    field.SetText("123456");
    EXPECT_EQ(field.Text(), "1234") << "cut at the field's limit";
    TypeInto("txtNumber", "98765");
    EXPECT_EQ(field.Text(), "9876");
}

TEST_F(ControlsTest, AFieldKeepsDirectionMarksAndShowsThatTheyAreThere)
{
    TextBox field(window, "txtGroup", {0, 3000, 900, 300});
    auto& edit = Find<QLineEdit>("txtGroup");
    field.SetText("a\u202Egpj\u200B.b");
    EXPECT_EQ(TextOf("txtGroup"), "a\uFFFDgpj\uFFFD.b");
    EXPECT_EQ(field.Text(), "a\u202Egpj\u200B.b");
    field.Change = countClick;
    QTest::keyClick(&edit, Qt::Key_Home);
    QTest::keyClicks(&edit, "xy");
    EXPECT_EQ(field.Text(), "xya\u202Egpj\u200B.b") << "what is not edited stays";
    edit.insert(QStringLiteral("\u2066z"));
    EXPECT_EQ(TextOf("txtGroup"), "xy\uFFFDza\uFFFDgpj\uFFFD.b");
    EXPECT_EQ(field.Text(), "xy\u2066za\u202Egpj\u200B.b");
    EXPECT_EQ(edit.cursorPosition(), 4);
    EXPECT_EQ(clicks, 3);
    TextBox password(window, "txtSecret", {0, 3300, 900, 300}, {.masked = true});
    password.SetText("\u200Dx");
    EXPECT_EQ(TextOf("txtSecret"), "\u200Dx") << "nobody sees it";
}

TEST_F(ControlsTest, AStepperReadsWhateverTheFieldHolds)
{
    struct Row {
        const char* before;
        int times;
        const char* after;
    };
    for (const Row& row :
        {Row{"10", 5, "12"}, Row{"2", -3, "1"}, Row{"x", -1, "1"}, Row{"3.5", 1, "5"}, Row{"9999", 1, "12"}}) {
        SCOPED_TRACE(row.before);
        window.txtNumber.SetText(row.before);
        Step("udNumber", row.times);
        EXPECT_EQ(window.txtNumber.Text(), row.after);
    }
    window.txtNumber.SetText("5");
    for (const bool enabled : {true, false}) {
        window.udNumber.SetEnabled(enabled);
        QTest::keyClick(&Find<QLineEdit>("txtNumber"), Qt::Key_Up);
        EXPECT_EQ(window.txtNumber.Text(), "6");
    }
}

TEST_F(ControlsTest, AListMovesItsCurrentRowOnlyWhenTold)
{
    ListBox& list = window.lstPlain;
    list.Click = countClick;
    for (const char* text : {"a", "b", "c", "\xFFz"})
        list.AddItem(text);
    EXPECT_EQ(list.ListIndex(), -1);
    list.SetFocus();
    DoEvents();
    EXPECT_EQ(list.ListIndex(), -1) << "focus does not pick a row";
    list.SetListIndex(2);
    EXPECT_TRUE(HighlightedRows("lstPlain").empty()) << "the row with the focus is not highlighted by it";
    list.SetSelected(0, true);
    list.InsertItem("before", 1);
    EXPECT_EQ(list.ListIndex(), 3);
    EXPECT_EQ(RowsOf("lstPlain"), (std::vector<std::string>{"a", "before", "b", "c", "\xC3\xBFz"}));
    EXPECT_EQ(list.List(4), "\xFFz") << "the row keeps its bytes";
    EXPECT_EQ(list.List(5), "");
    list.RemoveItem(3);
    EXPECT_EQ(list.ListIndex(), -1) << "the neighbour does not take over";
    EXPECT_EQ(HighlightedRows("lstPlain"), std::vector<int>{0});
    EXPECT_EQ(clicks, 1);
    ClickRow("lstPlain", 1);
    EXPECT_EQ(list.ListIndex(), 1);
    EXPECT_EQ(HighlightedRows("lstPlain"), std::vector<int>{1});
    list.SetListIndex(-1);
    EXPECT_EQ(list.ListIndex(), -1);
}

TEST_F(ControlsTest, ATextThatNobodyReadsIsNotSetInFull)
{
    const std::size_t size = std::size_t{50} << 20;
    window.lstPlain.AddItem(std::string(size, 'x'));
    DoEvents();
    EXPECT_LT(RowsOf("lstPlain").front().size(), 3000U);
    EXPECT_EQ(window.lstPlain.List(0).size(), size);
}

TEST_F(ControlsTest, AListTellsWhatARowDoesNotShow)
{
    QWidget& area = *Find<QAbstractItemView>("lstPlain").viewport();
    const auto isBlank = [&] {
        const QImage shown = area.grab().toImage();
        return shown == QImage(shown).scaled(1, 1).scaled(shown.size());
    };
    EXPECT_FALSE(isBlank()) << "the hint";
    window.lstPlain.AddItem(" ");
    DoEvents();
    EXPECT_TRUE(isBlank());
    window.lstPlain.Clear();
    window.lstPlain.SetToolTip("of the list");
    const std::string wide = "a <b>name</b> of " + std::string(200, 'w');
    window.lstPlain.AddItems({"short", wide});
    DoEvents();
    EXPECT_EQ(TipOf("lstPlain", 0), "of the list");
    EXPECT_EQ(TipOf("lstPlain", 1), "<qt>a &lt;b&gt;name&lt;/b&gt;" + wide.substr(13));
}

TEST_F(ControlsTest, AListTellsWhatIsSetInTooFar)
{
    const TemporaryFolder folder;
    std::string deep = folder.Path();
    for (int level = 0; level < 40; ++level)
        deep += "d/";
    std::filesystem::create_directories(deep + "inside");
    DirectoryList list(window, "Dir1", {4000, 2700, 1500, 900});
    ASSERT_TRUE(list.SetPath(deep));
    EXPECT_EQ(list.List(list.ListIndex() + 1), deep + "inside");
    list.SetVisible(true);
    EXPECT_EQ(TipOf("Dir1", 1), "");
    EXPECT_EQ(TipOf("Dir1", list.ListIndex()), "d");
}

TEST_F(ControlsTest, ASortedListKeepsCurrentAndHighlightedRowsOverAdditions)
{
    ListBox& list = window.lstSorted;
    for (const char* text : {"m", "d", "M"})
        list.AddItem(text);
    list.SetListIndex(2);
    EXPECT_EQ(list.List(2), "m");
    list.Click = countClick;
    for (const char* text : {"z", "a", "B", "m"})
        list.AddItem(text);
    EXPECT_TRUE(Until([] { return RowsOf("lstSorted").size() == 7; }));
    EXPECT_EQ(RowsOf("lstSorted"), (std::vector<std::string>{"a", "B", "d", "M", "m", "m", "z"}));
    EXPECT_EQ(list.List(list.ListIndex()), "m");
    EXPECT_EQ(HighlightedRows("lstSorted"), std::vector<int>{list.ListIndex()});
    EXPECT_EQ(clicks, 0);
    list.Clear();
    EXPECT_EQ(list.ListIndex(), -1);
}

TEST_F(ControlsTest, AListIsBroughtUpToDateBehindAnotherTabButNotWhileTheProgramHidesIt)
{
    window.SSPanel1.SetVisible(false);
    ListBox list(window.SSPanel1, "lstBehind", {0, 0, 900, 900}, {.sorted = true});
    EXPECT_TRUE(list.Visible());
    list.AddItem("b");
    EXPECT_TRUE(Until([] { return RowsOf("lstBehind").size() == 1; }));
    list.SetVisible(false);
    list.AddItem("a");
    EXPECT_FALSE(Until([] { return RowsOf("lstBehind").size() == 2; }, 80ms));
    list.SetVisible(true);
    EXPECT_TRUE(Until([] { return RowsOf("lstBehind").size() == 2; }));
}

TEST_F(ControlsTest, EnterOnARowIsADoubleClick)
{
    window.lstPlain.AddItem("a");
    window.lstPlain.DblClick = countClick;
    DoubleClickRow("lstPlain", 0);
    QTest::keyClick(&Find<QAbstractItemView>("lstPlain"), Qt::Key_Return);
    EXPECT_EQ(clicks, 2);
}

TEST_F(ControlsTest, PlacesAreTwipsOfTheFont)
{
    const double factor = QFontMetrics(QApplication::font()).height() / 13.0;
    EXPECT_EQ(Twips::ToPixels(150), qRound(10 * factor));
    EXPECT_EQ(Find<QWidget>("SSPanel1").width(), Twips::ToPixels(5500) - Twips::ToPixels(4000));
    window.SSPanel1.SetWidth(1234.5);
    EXPECT_EQ(window.SSPanel1.Width(), 1234.5);
    window.SetHeight(3660);
    DoEvents();
    EXPECT_EQ(window.ScaleHeight(), 3000);
    const QWidget& bar = Find<QWidget>("StatusBar1");
    EXPECT_EQ(bar.geometry().bottom(), bar.parentWidget()->rect().bottom()) << "follows the bottom edge";
}

// The toolkit would hand it to the next control, for the next key to change that one.
TEST_F(ControlsTest, TheFocusComesBackToWhatTheProgramTookAway)
{
    QWidget& form = *WindowNamed("frmTest");
    const auto hasFocus = [&](const char* name) { return form.focusWidget() == &Find<QWidget>(name); };
    struct Row {
        const char* what;
        Control& taken;
        Control& focused;
        const char* name;
    };
    for (const Row& row : {Row{"itself", window.chkOne, window.chkOne, "chkOne"},
             Row{"a list", window.lstPlain, window.lstPlain, "lstPlain"},
             Row{"what it lies in", window.SSPanel1, window.cmdInside, "cmdInside"}}) {
        for (const auto set : {&Control::SetEnabled, &Control::SetVisible}) {
            SCOPED_TRACE(row.what);
            for (const bool moveOn : {false, true}) {
                row.focused.SetFocus();
                ASSERT_TRUE(hasFocus(row.name));
                (row.taken.*set)(false);
                (row.taken.*set)(false);
                ASSERT_NE(form.focusWidget(), nullptr);
                EXPECT_EQ(form.focusWidget()->focusPolicy(), Qt::NoFocus) << "a control could be changed";
                if (moveOn)
                    window.cboNames.SetFocus();
                (row.taken.*set)(true);
                EXPECT_TRUE(hasFocus(moveOn ? "cboNames" : row.name));
            }
        }
    }
    window.chkOne.SetFocus();
    window.chkOne.SetVisible(false);
    window.chkOne.SetEnabled(false);
    window.chkOne.SetVisible(true);
    window.chkOne.SetEnabled(true);
    EXPECT_TRUE(hasFocus("chkOne"));
}

TEST_F(ControlsTest, AStatusPanelTakesItsTextAtOnce)
{
    for (const char* text : {"Items: 98", "Items: 99"})
        window.StatusBar1.Panels(1).SetText(text);
    EXPECT_EQ(PanelText("StatusBar1", 1), "Items: 99");
    EXPECT_TRUE(Find<QWidget>("StatusBar1.Panels(1)").updatesEnabled());
    window.StatusBar1.Panels(2).SetStyle(PanelStyle::Time);
    EXPECT_NE(PanelText("StatusBar1", 2), "two");
}

TEST(Pointers, OneOfTheScreenReplacesTheOther)
{
    Screen::SetMousePointer(MousePointer::Hourglass);
    Screen::SetMousePointer(MousePointer::ArrowHourglass);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    Screen::SetMousePointer(MousePointer::Default);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST(Timer, TicksInsideAWaitUntilItIsDisabled)
{
    Timer timer(5ms);
    int ticks = 0;
    timer.Tick = [&] {
        if (++ticks == 3)
            timer.SetEnabled(false);
    };
    EXPECT_FALSE(Until([&] { return ticks > 0; }, 20ms));
    timer.SetEnabled(true);
    EXPECT_FALSE(Until([&] { return ticks > 3; }, 200ms));
    EXPECT_EQ(ticks, 3);
}
