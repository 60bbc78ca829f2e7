#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Buttons.h"
#include "platform/ComboBox.h"
#include "platform/DirectoryList.h"
#include "platform/Events.h"
#include "platform/FileList.h"
#include "platform/Form.h"
#include "platform/Frame.h"
#include "platform/Label.h"
#include "platform/ListBox.h"
#include "platform/Menu.h"
#include "platform/Screen.h"
#include "platform/StatusBar.h"
#include "platform/Stepper.h"
#include "platform/TabStrip.h"
#include "platform/TextArea.h"

#include <QAbstractItemView>
#include <QBitmap>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QToolTip>

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

struct Window : Form {
    Window()
        : Form("frmTest", "Test", {.clientWidth = 6000, .clientHeight = 4500})
    {
        for (const char* text : {"a", "b", "c"}) {
            cboNames.AddItem(text);
            lstPlain.AddItem(text);
        }
    }
    Menu mnuFile{*this, "mnuFile", "&File"};
    MenuEntry mnuMark{mnuFile, "mnuMark", "Mark", "Ctrl+M"};
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
    CommandButton cmdOther{SSPanel1, "cmdOther", "Other", {0, 300, 900, 300}};
    StatusBar StatusBar1{*this, "StatusBar1", {0, 4200, 6000, 300},
        {{"", "one", "Tip", PanelStyle::Text, true}, {"two", "two"}}, StatusBarPlace::BottomEdge};
};

class ControlsTest : public testing::Test {
protected:
    ControlsTest()
    {
        window.SetVisible(true);
        DoEvents();
    }

    static QImage Seen(const std::string& control) { return Find<QWidget>(control).grab().toImage(); }

    Window window;
    int clicks = 0;
    const std::function<void()> countClick = [this] { ++clicks; };
};

// What is dark in it.
QRegion Ink(const QImage& image)
{
    const QImage blackAndWhite = image.convertToFormat(QImage::Format_Mono, Qt::ThresholdDither);
    return QRegion(
        QBitmap::fromImage(blackAndWhite.convertToFormat(QImage::Format_RGB32).createMaskFromColor(0xffffffff)));
}

// How many lines a text of "m" takes.
int Lines(const QRegion& ink)
{
    int lines = 0;
    bool before = false;
    for (int y = 0; y <= ink.boundingRect().bottom(); ++y) {
        const bool now = ink.intersects(QRect(0, y, 10000, 1));
        lines += now && !before ? 1 : 0;
        before = now;
    }
    return lines;
}

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

TEST_F(ControlsTest, CodeRaisesWhatTheUserDoesAndOnlyForAChange)
{
    window.chkOne.Click = window.chkFirst.Click = window.chkSecond.Click = countClick;
    window.cboNames.Click = window.lstPlain.Click = window.txtNumber.Change = countClick;
    struct Row {
        const char* what;
        std::function<void()> code, user;
    };
    for (const Row& row : {Row{"check box", [&] { window.chkOne.SetValue(1); }, [] { Check("chkOne", false); }},
             Row{"option", [&] { window.chkSecond.SetValue(true); }, [] { Click("chkFirst"); }},
             Row{"combo", [&] { window.cboNames.SetListIndex(1); }, [] { ChooseEntry("cboNames", "a"); }},
             Row{"its text", [&] { EXPECT_TRUE(window.cboNames.SelectText("c")); },
                 [] { ChooseEntry("cboNames", "a"); }},
             Row{"list", [&] { window.lstPlain.SetListIndex(1); }, [] { ClickRow("lstPlain", 0); }},
             Row{"text", [&] { window.txtNumber.SetText("2"); }, [] { Step("udNumber", -1); }}}) {
        SCOPED_TRACE(row.what);
        clicks = 0;
        row.code();
        row.code();
        EXPECT_EQ(clicks, 1);
        row.user();
        row.user();
        EXPECT_EQ(clicks, 2);
        row.code();
        EXPECT_EQ(clicks, 3);
    }
    window.chkSecond.SetValue(false);
    EXPECT_FALSE(window.chkFirst.Value() || window.chkSecond.Value());
    // A check mark is for the handler to set.
    for (const bool checked : {true, false}) {
        window.mnuMark.SetChecked(checked);
        window.mnuMark.Click = countClick;
        QTest::keyClick(WindowNamed("frmTest"), Qt::Key_M, Qt::ControlModifier);
        EXPECT_EQ(window.mnuMark.Checked(), checked);
    }
    EXPECT_EQ(clicks, 5);
}

TEST_F(ControlsTest, AComboSelectsNothingByItself)
{
    ComboBox& combo = window.cboNames;
    combo.AddItem("\xFFz");
    EXPECT_EQ(combo.ListIndex(), -1);
    combo.SetListIndex(1);
    EXPECT_FALSE(combo.SelectText("d"));
    for (const int none : {-2, 4})
        combo.SetListIndex(none);
    combo.Click = countClick;
    combo.RemoveItem(0);
    EXPECT_EQ(combo.Text(), "b");
    combo.RemoveItem(0);
    EXPECT_EQ(combo.ListIndex(), -1);
    EXPECT_EQ(clicks, 0);
    combo.SetListIndex(1);
    EXPECT_EQ(combo.Text(), "\xFFz") << "the row keeps its bytes";
    QWidget& widget = Find<QWidget>("cboNames");
    QWheelEvent wheel({5, 5}, widget.mapToGlobal(QPointF(5, 5)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &wheel);
    EXPECT_EQ(combo.ListIndex(), 1);
}

TEST_F(ControlsTest, BytesAreShownAsUtf8OrElseAsWindows1252)
{
    Label label(window, "label", "", {0, 3000, 900, 300});
    TextBox field(window, "field", {0, 3300, 900, 300});
    TextBox password(window, "password", {0, 3600, 900, 300}, {.masked = true});
    const auto masked = [](int count) { return QString(count, QChar::ReplacementCharacter).toStdString(); };
    struct Row {
        std::string bytes, shown;
    };
    for (const Row& row : {Row{"\xC3\xA4", "\xC3\xA4"}, Row{"\xFF\x80", "\xC3\xBF\xE2\x82\xAC"},
             Row{"a\x81", "a\uFFFD"}, Row{"\u061C\u200B\u200F\u2028\u202E\u2060\u206F\uFEFF", masked(8)},
             Row{"\u200A\u2010\u2027\u202F\u205F\u2070 \u00A0~", "\u200A\u2010\u2027\u202F\u205F\u2070 \u00A0~"}}) {
        label.SetCaption(row.bytes);
        field.SetText(row.bytes);
        password.SetText(row.bytes);
        EXPECT_EQ(TextOf("field"), row.shown);
        EXPECT_EQ(field.Text(), row.bytes) << "kept until it is edited";
        EXPECT_EQ(TextOf("label"), row.shown);
        EXPECT_EQ(TextOf("password") == row.shown, row.shown != masked(8)) << "nobody sees it";
        EXPECT_EQ(Find<QLineEdit>("password").displayText(), QString(Find<QLineEdit>("password").text().size(), u'*'));
    }
    label.SetCaption("\x1F\x7F\xC2\x9F\n");
    EXPECT_EQ(TextOf("label"), masked(3) + "\n");
    // A text that nobody reads is not set in full, nor cut through a character.
    const std::string letters(2000, 'x');
    label.SetCaption(letters);
    EXPECT_EQ(TextOf("label"), letters);
    label.SetCaption(letters.substr(1) + "\u00E4");
    EXPECT_EQ(TextOf("label"), letters.substr(1) + "\u2026");
}

TEST_F(ControlsTest, AnEditKeepsWhatStandsAroundIt)
{
    TextBox& number = window.txtNumber;
    number.SetText("12\u202E56");
    EXPECT_EQ(number.Text(), "12\u202E5") << "cut at the field's limit";
    TypeInto("txtNumber", "98765");
    EXPECT_EQ(number.Text(), "9876");

    TextBox field(window, "field", {0, 3000, 900, 300});
    auto& edit = Find<QLineEdit>("field");
    struct Row {
        int from;
        const char* typed;
        const char* text;
        int cursor;
    };
    for (const Row& row : {Row{0, "xy", "xya\u202Ebb\u200Bc", 2}, Row{3, "b", "a\u202Ebbb\u200Bc", 4},
             Row{4, "\u2066", "a\u202Ebb\u2066\u200Bc", 5}, Row{6, "c", "a\u202Ebb\u200Bcc", 7},
             Row{4, "", "a\u202Eb\u200Bc", 3}, Row{2, "", "abb\u200Bc", 1}}) {
        SCOPED_TRACE(row.text);
        field.SetText("a\u202Ebb\u200Bc");
        field.Change = countClick;
        clicks = 0;
        edit.setCursorPosition(row.from);
        if (*row.typed == '\0')
            edit.backspace();
        edit.insert(QString::fromUtf8(row.typed));
        EXPECT_EQ(field.Text(), row.text);
        EXPECT_FALSE(edit.text().contains(u'\u2066') || edit.text().contains(u'\u202E'));
        EXPECT_EQ(edit.cursorPosition(), row.cursor);
        EXPECT_EQ(clicks, 1);
    }
    field.DblClick = countClick;
    QTest::mouseDClick(&edit, Qt::LeftButton);
    EXPECT_EQ(clicks, 2);
    field.EnterPresses(window.cmdInside);
    window.cmdInside.Click = countClick;
    for (const bool enabled : {true, false}) {
        window.cmdInside.SetEnabled(enabled);
        QTest::keyClick(&edit, Qt::Key_Return);
        EXPECT_EQ(clicks, 3);
    }
    field.SelectAll();
    EXPECT_EQ(edit.selectedText(), edit.text());
}

TEST_F(ControlsTest, AStepperReadsWhateverTheFieldHolds)
{
    for (const auto& [before, times, after] :
        {std::tuple("10", 5, "12"), {"2", -3, "1"}, {"x", -1, "1"}, {"3.5", 1, "5"}}) {
        SCOPED_TRACE(before);
        window.txtNumber.SetText(before);
        Step("udNumber", times);
        EXPECT_EQ(window.txtNumber.Text(), after);
    }
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home})
        QTest::keyClick(&Find<QWidget>("txtNumber"), key);
    EXPECT_EQ(window.txtNumber.Text(), "6");
    const QList<QToolButton*> arrows = Find<QWidget>("udNumber").findChildren<QToolButton*>();
    EXPECT_NE(arrows[0]->grab().toImage(), arrows[1]->grab().toImage());
    QTest::mousePress(arrows[1], Qt::LeftButton);
    EXPECT_TRUE(Until([&] { return window.txtNumber.Text() == "1"; })) << "one that is held down goes on";
    QTest::mouseRelease(arrows[1], Qt::LeftButton);
    window.udNumber.SetEnabled(false);
    QTest::keyClick(&Find<QWidget>("txtNumber"), Qt::Key_Up);
    EXPECT_EQ(window.txtNumber.Text(), "1");
}

TEST_F(ControlsTest, ATextAreaGrowsAtItsEndAndScrollsThere)
{
    TextArea area(window, "area", {0, 2700, 1500, 600}, TextAreaStyle::Log);
    area.SetVisible(true);
    for (const char* text : {"a\r", "\nb\u202E\r\nc", "d"})
        area.Append(text, 99);
    QTest::keyClick(&Find<QWidget>("area"), Qt::Key_X); // which nobody can type into it
    EXPECT_EQ(TextOf("area"), "a\nb\uFFFD\ncd");
    EXPECT_EQ(area.Length(), 7);
    area.Cut(1, 3);
    area.Cut(3, 9);
    EXPECT_EQ(TextOf("area"), "a\nc");
    for (int line = 0; line < 30; ++line)
        area.Append(std::string(300, 'm') + "\r\n", 99);
    const auto& view = Find<QAbstractScrollArea>("area");
    EXPECT_TRUE(view.verticalScrollBar()->maximum() > 0);
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    EXPECT_GT(view.horizontalScrollBar()->maximum(), 100) << "in one line";
    EXPECT_EQ(view.fontMetrics().horizontalAdvance("iii"), view.fontMetrics().horizontalAdvance("mmm"));
    area.Append("\r", 9);
    area.Clear();
    area.Append("\nd", 9);
    EXPECT_EQ(TextOf("area"), "\nd");
}

TEST_F(ControlsTest, AListMovesItsCurrentRowOnlyWhenTold)
{
    ListBox& list = window.lstPlain;
    list.Click = countClick;
    list.AddItem("\xFFz");
    list.SetFocus();
    DoEvents();
    EXPECT_EQ(list.ListIndex(), -1) << "focus does not pick a row";
    list.SetListIndex(2);
    list.SetListIndex(4);
    EXPECT_TRUE(HighlightedRows("lstPlain").empty()) << "the row with the focus is not highlighted by it";
    list.SetSelected(0, true);
    list.SetSelected(1, true);
    list.SetSelected(1, false);
    list.SetSelected(9, true);
    list.InsertItem("before", 1);
    EXPECT_EQ(list.ListIndex(), 3);
    EXPECT_THAT(RowsOf("lstPlain"), ElementsAre("a", "before", "b", "c", "\xC3\xBFz"));
    EXPECT_EQ(list.List(4) + list.List(5) + list.List(-1), "\xFFz") << "the row keeps its bytes";
    list.RemoveItem(3);
    EXPECT_EQ(list.ListIndex(), -1) << "the neighbour does not take over";
    EXPECT_THAT(HighlightedRows("lstPlain"), ElementsAre(0));
    EXPECT_EQ(clicks, 1);
    ClickRow("lstPlain", 1);
    ClickRow("lstPlain", 3, Qt::ControlModifier);
    list.SetFocus();
    EXPECT_EQ(list.ListIndex(), 3);
    EXPECT_THAT(HighlightedRows("lstPlain"), ElementsAre(1, 3));
    ClickRow("lstPlain", 2, Qt::ControlModifier);
    list.SetSelected(2, false);
    EXPECT_THAT(list.TakeSelected(), ElementsAre("before", "\xFFz"));
    EXPECT_EQ(list.List(list.ListIndex()), "b");
    list.InsertItem("first", -1);
    list.InsertItem("last", 99);
    EXPECT_THAT(RowsOf("lstPlain"), ElementsAre("first", "a", "b", "last"));
    EXPECT_TRUE(list.TakeSelected().empty());
    list.SetListIndex(-1);
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(clicks, 4);
}

TEST_F(ControlsTest, AListTellsWhatARowDoesNotShow)
{
    window.lstPlain.Clear();
    EXPECT_EQ(window.lstPlain.TimesCleared(), 1U);
    QWidget& area = *Find<QAbstractItemView>("lstPlain").viewport();
    const auto isBlank = [&] { return Ink(area.grab().toImage()).isEmpty(); };
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
    EXPECT_GT(Find<QAbstractItemView>("lstPlain").horizontalScrollBar()->maximum(), 1000);
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
    EXPECT_EQ(list.ListCount(), 7);
    EXPECT_TRUE(Until([] { return RowsOf("lstSorted").size() == 7; }));
    EXPECT_THAT(RowsOf("lstSorted"), ElementsAre("a", "B", "d", "M", "m", "m", "z"));
    EXPECT_EQ(list.ListIndex(), 4);
    EXPECT_THAT(HighlightedRows("lstSorted"), ElementsAre(4));
    EXPECT_EQ(clicks, 0);
    list.SetSelected(1, true);
    EXPECT_THAT(HighlightedRows("lstSorted"), ElementsAre(1));
    list.SetListIndex(-1);
    EXPECT_TRUE(HighlightedRows("lstSorted").empty());
    list.AddItem("c");
    list.Clear();
    EXPECT_EQ(list.ListCount() + list.ListIndex(), -1);
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

TEST_F(ControlsTest, WhatIsADoubleClickOnAList)
{
    window.lstPlain.DblClick = countClick;
    auto& view = Find<QAbstractItemView>("lstPlain");
    const auto beside = [&](Qt::MouseButton button) {
        QTest::mouseDClick(view.viewport(), button, {}, QPoint(5, view.viewport()->height() - 5));
        return clicks;
    };
    EXPECT_EQ(beside(Qt::RightButton), 0);
    EXPECT_EQ(beside(Qt::LeftButton), 1) << "there is no current row";
    DoubleClickRow("lstPlain", 0);
    EXPECT_EQ(beside(Qt::LeftButton), 2);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Delete})
        QTest::keyClick(&view, key);
    window.lstPlain.DeleteKey = countClick;
    QTest::keyClick(&view, Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_EQ(clicks, 4);
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(clicks, 5);
}

TEST_F(ControlsTest, DirectoriesAndTheirFiles)
{
    const TemporaryFolder folder;
    std::string deep = folder.Path();
    for (int level = 0; level < 40; ++level)
        deep += "d/";
    std::filesystem::create_directories(deep + "inside");
    for (const char* name : {"b.JPG", "A.jpg", "c.gif"})
        MakeFile(deep + name, "");
    DirectoryList list(window, "Dir1", {4000, 2700, 1500, 900});
    FileList files(window, "File1", {0, 2700, 1500, 900}, {".jpg"});
    list.Change = files.PathChange = countClick;
    for (const char* none : {"", "/no such place"})
        EXPECT_FALSE(list.SetPath(none) || files.SetPath(none));
    for (const char* end : {"", "inside/../", "/"})
        ASSERT_TRUE(list.SetPath(deep + end) && files.SetPath(deep));
    EXPECT_EQ(clicks, 2);
    EXPECT_EQ(list.List(list.ListIndex() + 1), deep + "inside");
    EXPECT_EQ(TipOf("Dir1", 1) + TipOf("Dir1", list.ListIndex()), "d") << "what is set in too far";
    EXPECT_THAT(RowsOf("File1"), ElementsAre("A.jpg", "b.JPG"));
    std::filesystem::remove_all(deep);
    files.Refresh();
    EXPECT_EQ(files.ListCount(), 0);
}

TEST_F(ControlsTest, PlacesAreTwipsOfTheFont)
{
    EXPECT_EQ(Twips::ToPixels(150), qRound(10 * QFontMetrics(QApplication::font()).height() / 13.0));
    EXPECT_EQ(Find<QWidget>("SSPanel1").width(), Twips::ToPixels(5500) - Twips::ToPixels(4000));
    window.SSPanel1.SetWidth(1234.5);
    EXPECT_EQ(window.SSPanel1.Width(), 1234.5);
}

// The toolkit would hand it to the next control, for the next key to change that one.
TEST_F(ControlsTest, TheFocusComesBackToWhatTheProgramTookAway)
{
    QWidget& form = *WindowNamed("frmTest");
    for (Control* const taken : {static_cast<Control*>(&window.cmdInside), static_cast<Control*>(&window.SSPanel1)}) {
        for (const auto set : {&Control::SetEnabled, &Control::SetVisible}) {
            for (const bool moveOn : {false, true}) {
                window.cmdInside.SetFocus();
                (taken->*set)(false);
                (taken->*set)(false);
                ASSERT_NE(form.focusWidget(), nullptr);
                EXPECT_EQ(form.focusWidget()->focusPolicy(), Qt::NoFocus) << "a control could be changed";
                if (moveOn)
                    window.cboNames.SetFocus();
                (taken->*set)(true);
                EXPECT_EQ(form.focusWidget(), &Find<QWidget>(moveOn ? "cboNames" : "cmdInside"));
            }
        }
    }
    window.chkOne.SetFocus();
    for (const bool allowed : {false, true}) {
        window.chkOne.SetVisible(allowed);
        window.chkOne.SetEnabled(allowed);
    }
    EXPECT_TRUE(Find<QWidget>("chkOne").hasFocus());
    window.lstPlain.GotFocus = countClick;
    window.lstPlain.SetFocus();
    EXPECT_EQ(clicks, 0);
    DoEvents();
    EXPECT_EQ(clicks, 1);
}

TEST_F(ControlsTest, LongCaptionsTakeTheLinesThatTheyNeed)
{
    const char* const words = "mmm mmm mmm";
    const double wide = Twips::FromPixels(QFontMetrics(QApplication::font()).horizontalAdvance(words)) + 450;
    for (const auto& [width, lines] : {std::pair(wide, 1), {wide - 600, 2}, {wide / 2, 3}}) {
        SCOPED_TRACE(lines);
        CheckBox box(window, "box", words, {0, 2700, width, 1200});
        box.SetVisible(true);
        const int indicator = 22;
        const QRect place = Find<QWidget>("box").rect();
        const QRegion ink = Ink(Seen("box").copy(place.adjusted(indicator, 0, 0, 0)));
        EXPECT_EQ(Lines(ink), lines);
        EXPECT_LT(ink.boundingRect().right(), place.width() - indicator - 1);
        QTest::mouseClick(&Find<QWidget>("box"), Qt::LeftButton, {}, place.bottomRight());
        EXPECT_EQ(box.Value(), 1);
        Label label(window, "label", words, {0, 2700, width - 300, 1200}, Alignment::Right);
        label.SetVisible(true);
        EXPECT_EQ(Lines(Ink(Seen("label"))), lines);
        EXPECT_GT(Ink(Seen("label")).boundingRect().right(), Find<QWidget>("label").width() - 5);
        label.KeepToOneLine();
        label.SetCaption(std::string(words) + "<b>" + words);
        EXPECT_EQ(Lines(Ink(Seen("label"))), 1);
        EXPECT_GT(Ink(Seen("label")).boundingRect().left(), 0);
        EXPECT_TRUE(Find<QWidget>("label").toolTip().startsWith("<qt>mmm mmm mmm&lt;b"));
        EXPECT_EQ(Find<QLabel>("label").textFormat(), Qt::PlainText);
    }
    TabStrip tabs(window, "tabs", {0, 2700, 1200, 900}, {"mmm mmm", "&&m"});
    tabs.SetVisible(true);
    tabs.SetTab(1);
    auto& bar = *Find<QTabWidget>("tabs").tabBar();
    EXPECT_NEAR(bar.tabRect(0).width(), bar.tabRect(1).width(), 1);
    for (int tab = 0; tab < 2; ++tab)
        EXPECT_EQ(Lines(Ink(bar.grab(bar.tabRect(tab).adjusted(4, 5, -4, -4)).toImage())), 2 - tab);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(0).center());
    EXPECT_TRUE(bar.hasFocus());
}

TEST_F(ControlsTest, ArrowsLookWhereTheyLead)
{
    for (const Arrow arrow : {Arrow::Up, Arrow::Down, Arrow::ToTop, Arrow::ToBottom}) {
        SCOPED_TRACE(static_cast<int>(arrow));
        ArrowButton button(window, "button", arrow, "leads", {3000, 2700, 360, 324});
        button.SetVisible(true);
        EXPECT_EQ(Find<QWidget>("button").toolTip() + Find<QWidget>("button").accessibleName(), "leadsleads");
        const bool isDown = arrow == Arrow::Down || arrow == Arrow::ToBottom;
        const QImage seen = Seen("button").mirrored(false, isDown);
        const QImage face = seen.copy(seen.rect().adjusted(4, 4, -4, -4));
        const QRect ink = Ink(face).boundingRect();
        EXPECT_LE((ink.center() - face.rect().center()).manhattanLength(), 3);
        const auto widthAt = [&](int y) { return (Ink(face) & QRect(0, y, 1000, 1)).boundingRect().width(); };
        EXPECT_GT(widthAt(ink.bottom()), ink.width() - 3);
        EXPECT_EQ(widthAt(ink.top()) > ink.width() - 3, arrow > Arrow::Down) << "the bar of an end";
    }
}

TEST_F(ControlsTest, AStatusPanelTakesItsTextAtOnce)
{
    for (const char* text : {"Items: 98", "Items: 99"})
        window.StatusBar1.Panels(1).SetText(text);
    EXPECT_EQ(PanelText("StatusBar1", 1), "Items: 99");
    EXPECT_TRUE(Find<QWidget>("StatusBar1.Panels(1)").updatesEnabled());
}

TEST(Pointers, OneOfTheScreenReplacesTheOther)
{
    for (const MousePointer pointer : {MousePointer::Hourglass, MousePointer::ArrowHourglass})
        Screen::SetMousePointer(pointer);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    Screen::SetMousePointer(MousePointer::Default);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(ControlsTest, EnterAndEscapePressTheDialogsButtons)
{
    std::string pressed;
    window.SetDialogButtons(window.cmdInside, window.cmdOther);
    window.cmdInside.Click = [&] { pressed += "ok "; };
    window.cmdOther.Click = [&] { pressed += "cancel "; };
    window.lstPlain.DblClick = [&] { pressed += "list "; };
    ASSERT_TRUE(Until([] { return WindowNamed("frmTest")->isActiveWindow(); }));
    for (const auto& [focused, key] : {std::pair("txtNumber", Qt::Key_Return), {"cmdOther", Qt::Key_Return},
             {"txtNumber", Qt::Key_Escape}, {"lstPlain", Qt::Key_Enter}, {"cmdInside", Qt::Key_Enter}}) {
        QWidget& widget = Find<QWidget>(focused);
        widget.setFocus();
        QTest::keyClick(&widget, key);
        EXPECT_EQ(Find<QPushButton>("cmdInside").isDefault(), widget.objectName() != "cmdOther") << focused;
    }
    EXPECT_EQ(pressed, "ok cancel cancel list ok ");
    window.cmdInside.SetToolTip("yes");
    window.cmdInside.SetShortcut("Alt+O");
    window.cmdOther.SetShortcut("Alt+C");
    EXPECT_EQ(Find<QWidget>("cmdInside").toolTip() + Find<QWidget>("cmdOther").toolTip(), "yes (Alt+O)Alt+C");
    QTest::keyClick(WindowNamed("frmTest"), Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(Until([&] { return pressed.ends_with("list ok ok "); }));
    EXPECT_FALSE(WindowNamed("frmTest")->windowFlags() & Qt::WindowMaximizeButtonHint);
    window.SetCaption("a\u202E");
    EXPECT_EQ(CaptionOf("frmTest"), "a\uFFFD");
}
