#include "tests/platform/ControlsTest.h"

#include "platform/Buttons.h"
#include "platform/Frame.h"
#include "platform/Label.h"
#include "platform/StatusBar.h"
#include "platform/Stepper.h"
#include "platform/TabStrip.h"

#include <QLabel>
#include <QLineEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

namespace {

// How many lines a text of "m" takes.
int Lines(const QRegion& ink)
{
    int lines = 0;
    for (int y = 0; y <= ink.boundingRect().bottom(); ++y)
        lines += ink.intersects(QRect(0, y, 10000, 1)) && !ink.intersects(QRect(0, y - 1, 10000, 1)) ? 1 : 0;
    return lines;
}

}

TEST_F(ControlsTest, BytesAreShownAsUtf8OrElseAsWindows1252)
{
    Label label(window, "label", "", {0, 3000, 900, 300});
    TextBox field(window, "field", {0, 3300, 900, 300});
    TextBox password(window, "password", {0, 3600, 900, 300}, {.masked = true});
    const auto masked = [](int count) { return QString(count, QChar::ReplacementCharacter).toStdString(); };
    const std::string plain = "\u200A\u2010\u2027\u202F\u205F\u2070 \u00A0~";
    for (const auto& [bytes, shown] :
        {std::pair<std::string, std::string>("\xC3\xA4", "\xC3\xA4"), {"\xFF\x80", "\xC3\xBF\xE2\x82\xAC"},
            {"a\x81", "a\uFFFD"}, {"\u061C\u200B\u200F\u2028\u202E\u2060\u206F\uFEFF", masked(8)}, {plain, plain}}) {
        label.SetCaption(bytes);
        field.SetText(bytes);
        password.SetText(bytes);
        EXPECT_EQ(TextOf("field"), shown);
        EXPECT_EQ(TextOf("label"), shown);
        EXPECT_EQ(field.Text() + password.Text(), bytes + bytes) << "kept until it is edited";
        EXPECT_EQ(Find<QLineEdit>("password").displayText().remove(u'*'), "") << "nobody sees it";
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
    TextBox field(window, "field", {0, 0, 900, 300}, {.maxLength = 7});
    auto& edit = Find<QLineEdit>("field");
    for (const auto& [from, typed, text, cursor] : {std::tuple(0, "x", "xa\u202Ebb\u200Bc", 1),
             {3, "b", "a\u202Ebbb\u200Bc", 4}, {4, "\u2066", "a\u202Ebb\u2066\u200Bc", 5},
             {6, "c", "a\u202Ebb\u200Bcc", 7}, {4, "", "a\u202Eb\u200Bc", 3}, {2, "", "abb\u200Bc", 1}}) {
        field.SetText("a\u202Ebb\u200Bc");
        field.Change = countClick;
        edit.setCursorPosition(from);
        if (*typed == '\0')
            edit.backspace();
        edit.insert(QString::fromUtf8(typed));
        EXPECT_EQ(field.Text(), text);
        EXPECT_FALSE(edit.text().contains(u'\u2066') || edit.text().contains(u'\u202E'));
        EXPECT_EQ(edit.cursorPosition(), cursor) << text;
        EXPECT_EQ(std::exchange(clicks, 0), 1);
        field.Change = nullptr;
    }
    field.SetText("12\u202E456789");
    EXPECT_EQ(field.Text(), "12\u202E4567") << "cut at the field's limit";
    field.DblClick = [&] { field.SelectAll(); };
    QTest::mouseDClick(&edit, Qt::LeftButton);
    EXPECT_EQ(edit.selectedText(), edit.text());
    CommandButton button(window, "button", "Button", {0, 600, 900, 300});
    field.EnterPresses(button);
    button.Click = countClick;
    for (const bool enabled : {true, false}) {
        button.SetEnabled(enabled);
        QTest::keyClick(&edit, Qt::Key_Return);
        EXPECT_EQ(clicks, 1);
    }
}

TEST_F(ControlsTest, AStepperReadsWhateverTheFieldHolds)
{
    TextBox number(window, "number", {0, 0, 900, 300});
    Stepper stepper(window, "stepper", number, {900, 0, 300, 300}, {.minimum = 1, .maximum = 12, .step = 1});
    Show();
    for (const auto& [before, times, after] :
        {std::tuple("10", 5, "12"), {"2", -3, "1"}, {"x", -1, "1"}, {"3.5", 1, "5"}}) {
        number.SetText(before);
        Step("stepper", times);
        EXPECT_EQ(number.Text(), after);
    }
    for (const bool enabled : {false, true}) {
        stepper.SetEnabled(enabled);
        for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home})
            QTest::keyClick(&Find<QWidget>("number"), key);
        EXPECT_EQ(number.Text(), enabled ? "6" : "5");
    }
    const QList<QToolButton*> arrows = Find<QWidget>("stepper").findChildren<QToolButton*>();
    EXPECT_NE(arrows[0]->grab().toImage(), arrows[1]->grab().toImage());
    QTest::mousePress(arrows[1], Qt::LeftButton);
    EXPECT_TRUE(Until([&] { return number.Text() == "4"; })) << "one that is held down goes on";
}

// The toolkit would hand it to the next control, for the next key to change that one.
TEST_F(ControlsTest, TheFocusComesBackToWhatTheProgramTookAway)
{
    TextBox other(window, "other", {0, 0, 900, 300});
    Panel panel(window, "panel", {0, 1200, 1500, 1500});
    CommandButton inside(panel, "inside", "Inside", {0, 0, 900, 300});
    Show();
    other.GotFocus = countClick;
    for (Control* const taken : {static_cast<Control*>(&inside), static_cast<Control*>(&panel)}) {
        for (const auto set : {&Control::SetEnabled, &Control::SetVisible}) {
            for (const bool moveOn : {false, true}) {
                inside.SetFocus();
                (taken->*set)(false);
                (taken->*set)(false);
                EXPECT_EQ(widget.focusWidget(), &widget) << "another control could be changed";
                if (moveOn)
                    other.SetFocus();
                (taken->*set)(true);
                EXPECT_EQ(widget.focusWidget(), &Find<QWidget>(moveOn ? "other" : "inside"));
            }
        }
    }
    EXPECT_EQ(clicks, 0) << "behind what brought it";
    DoEvents();
    EXPECT_EQ(clicks, 4);
}

TEST_F(ControlsTest, LongCaptionsTakeTheLinesThatTheyNeed)
{
    window.SetVisible(true);
    const char* const words = "mmm mmm mmm";
    const double wide = Twips::FromPixels(QFontMetrics(QApplication::font()).horizontalAdvance(words)) + 450;
    for (const auto& [width, lines] : {std::pair(wide, 1), {wide - 600, 2}, {wide / 2, 3}}) {
        SCOPED_TRACE(lines);
        CheckBox box(window, "box", words, {0, 2700, width, 1200});
        box.SetVisible(true);
        const QRect caption = Find<QWidget>("box").rect().adjusted(22, 0, 0, 0);
        const QRegion ink = Ink(Find<QWidget>("box"), caption);
        EXPECT_EQ(Lines(ink), lines);
        EXPECT_LT(ink.boundingRect().right(), caption.width() - 1);
        QTest::mouseClick(&Find<QWidget>("box"), Qt::LeftButton, {}, caption.bottomRight());
        EXPECT_EQ(box.Value(), 1);
        Label label(window, "label", words, {0, 2700, width - 300, 1200}, Alignment::Right);
        label.SetVisible(true);
        EXPECT_EQ(Lines(Ink("label")), lines);
        EXPECT_GT(Ink("label").boundingRect().right(), Find<QWidget>("label").width() - 5);
        label.KeepToOneLine();
        label.SetCaption(std::string(words) + "<b>" + words);
        EXPECT_EQ(Lines(Ink("label")), 1);
        EXPECT_GT(Ink("label").boundingRect().left(), 0);
        EXPECT_TRUE(Find<QWidget>("label").toolTip().startsWith("<qt>mmm mmm mmm&lt;b"));
    }
}

TEST_F(ControlsTest, TabsAreEvenAndAsHighAsTheirCaptions)
{
    TabStrip tabs(window, "tabs", {0, 2700, 1200, 900}, {"mmm mmm", "&&m"});
    TabStrip low(window, "low", {2000, 2700, 1200, 900}, {"m", "m"});
    Show();
    auto& bar = *Find<QTabWidget>("tabs").tabBar();
    EXPECT_NEAR(bar.tabRect(0).width(), bar.tabRect(1).width(), 1);
    EXPECT_EQ(bar.height(), Find<QTabWidget>("low").tabBar()->height() + bar.fontMetrics().height());
    for (const int tab : {1, 0}) {
        QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(tab).center());
        EXPECT_TRUE(bar.hasFocus());
        EXPECT_EQ(Lines(Ink(bar, bar.tabRect(tab).adjusted(6, 6, -6, -6))), 2 - tab);
    }
}

TEST_F(ControlsTest, AStatusPanelPaintsEachTextAndAPadlock)
{
    struct Paints : QObject {
        bool eventFilter(QObject*, QEvent* event) override { return event->type() == QEvent::Paint && ++count < 0; }
        int count = 0;
    } paints;
    StatusBar bar(window, "bar", {0, 4200, 6000, 300}, {{"mmm", ""}, {"", "", "", PanelStyle::Date}});
    Show();
    auto& panel = Find<QLabel>("bar.Panels(1)");
    panel.installEventFilter(&paints);
    for (const char* text : {"m", "mm", "mmm"})
        bar.Panels(1).SetText(text);
    EXPECT_EQ(PanelText("bar", 1), "mmm");
    EXPECT_TRUE(Until([&] { return paints.count == 2; })) << "the first at once, the last a little later";
    EXPECT_EQ(PanelText("bar", 2), QLocale().toString(QDate::currentDate(), QLocale::ShortFormat).toStdString());
    const int text = Ink("bar.Panels(1)").boundingRect().width();
    bar.Panels(1).SetPadlock(true);
    DoEvents();
    const QRect room(2, 2, panel.indent(), panel.height() - 4);
    EXPECT_GT(Ink(panel, room).boundingRect().height(), panel.fontMetrics().ascent() * 3 / 4);
    EXPECT_GE(Ink(panel, panel.rect().adjusted(panel.indent() - 2, 2, -2, -2)).boundingRect().width(), text - 6);
}
