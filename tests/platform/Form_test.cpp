#include "demo/support/Screen.h"
#include "platform/Buttons.h"
#include "platform/Events.h"
#include "platform/Form.h"
#include "platform/ListBox.h"
#include "platform/Menu.h"
#include "platform/Screen.h"
#include "platform/TextBox.h"
#include "platform/Timer.h"

#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

struct Dialog : Form {
    explicit Dialog(const char* name, BorderStyle newBorder = BorderStyle::Fixed)
        : Form(name, "a\u202E", {.clientWidth = 3000, .clientHeight = 3000, .border = newBorder})
    {
        Unload = [this] { SetVisible(false); };
        cmdOk.Click = [this] { pressed.push_back("ok"); };
        cmdCancel.Click = [this] { pressed.push_back("cancel"); };
        lstRows.DblClick = [this] { pressed.push_back("list"); };
    }
    std::vector<std::string> pressed;
    TextBox txtName{*this, "txtName", {0, 0, 900, 300}};
    ListBox lstRows{*this, "lstRows", {0, 300, 900, 900}};
    CommandButton cmdOk{*this, "cmdOk", "OK", {0, 1200, 900, 300}};
    CommandButton cmdCancel{*this, "cmdCancel", "Cancel", {0, 1500, 900, 300}};
};

class FormTest : public testing::Test {
protected:
    Dialog form{"frmTest", BorderStyle::Sizable};
};

}

TEST_F(FormTest, EnterAndEscapePressTheDialogsButtons)
{
    form.SetDialogButtons(form.cmdOk, form.cmdCancel);
    form.SetVisible(true);
    ASSERT_TRUE(Until([] { return WindowNamed("frmTest")->isActiveWindow(); }));
    struct Row {
        Control& focused;
        const char* name;
        Qt::Key key;
        const char* pressed;
    };
    for (const Row& row :
        {Row{form.txtName, "txtName", Qt::Key_Return, "ok"}, Row{form.cmdCancel, "cmdCancel", Qt::Key_Return, "cancel"},
            Row{form.txtName, "txtName", Qt::Key_Escape, "cancel"}, Row{form.lstRows, "lstRows", Qt::Key_Enter, "list"},
            Row{form.cmdOk, "cmdOk", Qt::Key_Enter, "ok"}}) {
        form.pressed.clear();
        row.focused.SetFocus();
        QTest::keyClick(&Find<QWidget>(row.name), row.key);
        EXPECT_THAT(form.pressed, ElementsAre(row.pressed)) << row.name;
        EXPECT_EQ(Find<QPushButton>("cmdOk").isDefault(), &row.focused != &form.cmdCancel) << row.name;
    }
    form.cmdOk.SetToolTip("yes");
    form.cmdOk.SetShortcut("Alt+O");
    form.cmdCancel.SetShortcut("Alt+C");
    EXPECT_EQ(Find<QWidget>("cmdOk").toolTip() + Find<QWidget>("cmdCancel").toolTip(), "yes (Alt+O)Alt+C");
    QTest::keyClick(WindowNamed("frmTest"), Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(Until([&] { return form.pressed.size() == 2; }));
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(CaptionOf("frmTest"), "a\uFFFD");
    Dialog fixed("frmFixed");
    EXPECT_TRUE(WindowNamed("frmTest")->windowFlags() & Qt::WindowMaximizeButtonHint);
    EXPECT_FALSE(WindowNamed("frmFixed")->windowFlags() & Qt::WindowMaximizeButtonHint);
}

TEST_F(FormTest, ItsPlaceIsWhatItIsWhenNormal)
{
    const auto place = [this] {
        return QRect(Twips::ToPixels(form.Left()), Twips::ToPixels(form.Top()),
            Twips::ToPixels(form.Width() - Form::designedBorders),
            Twips::ToPixels(form.Height() - Form::designedTitle));
    };
    QWidget& window = *WindowNamed("frmTest");
    const QRect wanted(60, 50, 310, 230);
    form.SetLeft(Twips::FromPixels(60));
    form.SetHeight(Twips::FromPixels(230) + Form::designedTitle);
    form.SetVisible(true);
    form.SetTop(Twips::FromPixels(50));
    int resizes = 0;
    form.Resize = [&] { ++resizes; };
    form.SetWidth(Twips::FromPixels(310) + Form::designedBorders);
    DoEvents();
    EXPECT_EQ(resizes, 1);
    for (const auto change : {&QWidget::showNormal, &QWidget::showMaximized, &QWidget::showMinimized, &QWidget::hide}) {
        (window.*change)();
        DoEvents();
        EXPECT_EQ(place(), wanted);
        form.SetVisible(false);
        EXPECT_EQ(place(), wanted);
        form.SetVisible(true);
        DoEvents();
        EXPECT_TRUE(form.IsNormal());
        EXPECT_EQ(place(), wanted);
        EXPECT_EQ(QRect(window.frameGeometry().topLeft(), window.size()), wanted);
    }
}

TEST_F(FormTest, TheBusyPointerCanBeSeen)
{
    for (const auto& [pointer, shape] : {std::pair(MousePointer::Hourglass, Qt::WaitCursor),
             {MousePointer::ArrowHourglass, Qt::BusyCursor}, {MousePointer::Default, Qt::ArrowCursor}}) {
        form.SetMousePointer(pointer);
        EXPECT_EQ(WindowNamed("frmTest")->cursor().shape(), shape);
        Screen::SetMousePointer(pointer);
        const QCursor* over = QApplication::overrideCursor();
        EXPECT_EQ(over != nullptr ? over->shape() : Qt::ArrowCursor, shape);
    }
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
    EXPECT_FALSE(Until([&] { return ticks > 3; }, 100ms));
    EXPECT_EQ(ticks, 3);
    timer.SetInterval(1h);
    timer.SetEnabled(true);
    EXPECT_TRUE(timer.Enabled());
    EXPECT_FALSE(Until([&] { return ticks > 3; }, 20ms));
    timer.SetInterval(1ms);
    EXPECT_TRUE(Until([&] { return ticks > 3; }));
}
