#include "base/Files.h"
#include "demo/sample/SamplePictures.h"
#include "tests/pictures/PicturesTest.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/HostilePictures.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <filesystem>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SlideShowTest : public PicturesTest {
protected:
    SlideShowTest() { settings.SaveSetting("SlideShow", "4", "-10"); }

    // Eight pictures, what is none, and what does not belong into the list.
    void Open(int pictures = 8)
    {
        for (int number = 1; number <= pictures; ++number)
            MakeFile(destination + "p" + std::to_string(number) + (number % 2 ? ".jpg" : ".GIF"), Drawn(number));
        MakeFile(destination + "p2a.bmp", "no picture");
        MakeFile(destination + ".p3.jpg", "hidden");
        MakeFile(destination + "p3.png", "another kind");
        Start();
        ChooseMenu("mnuSlideShow");
        EXPECT_EQ(Image(), "Total: " + std::to_string(pictures + 1));
    }

    static std::string Drawn(int number)
    {
        return DrawPicture(
            static_cast<Scene>(number % 6), number == 2 ? 90 : 60, 40, static_cast<unsigned>(number), "JPEG");
    }

    static std::string Image() { return PanelText("frmSlideShow/StatusBar1", 1); }
    static std::string Pane() { return PanelText("frmSlideShow/StatusBar1", 2); }
    static std::string Button(int index) { return "frmSlideShow/Command1(" + std::to_string(index) + ")"; }

    static QWidget& PaneImage(int pane) { return Find<QWidget>("PreviewImage(" + std::to_string(pane) + ")"); }
    static QWidget& PaneFrame(int pane) { return Find<QWidget>("frmSlideShow/SSPanel1(" + std::to_string(pane) + ")"); }

    static bool Shows(int pane, int number)
    {
        return PicturesTest::Shows(PaneImage(pane).objectName().toStdString(), Drawn(number));
    }
    static bool ShowsNothing(int pane)
    {
        return PicturesTest::ShowsNothing(PaneImage(pane).objectName().toStdString());
    }
    static bool IsHighlighted(int pane) { return PaneFrame(pane).backgroundRole() == QPalette::Highlight; }

    // The name of the file in a pane, as the third panel tells it.
    static std::string NameIn(int pane)
    {
        QTest::mouseMove(&PaneImage(pane), QPoint(2, 2));
        QTest::mouseMove(&PaneImage(pane), PaneImage(pane).rect().center());
        return PanelText("frmSlideShow/StatusBar1", 3);
    }
};

}

TEST_F(SlideShowTest, SixPanesInACircle)
{
    Open();
    EXPECT_EQ(TextOf("txtDelay"), "10");
    EXPECT_EQ(Pane(), "Stopped");
    EXPECT_THAT(RowsOf("lstFiles"),
        ElementsAre("p1.jpg", "p2.GIF", "p2a.bmp", "p3.jpg", "p4.GIF", "p5.jpg", "p6.GIF", "p7.jpg", "p8.GIF"));
    Click(Button(0));
    EXPECT_EQ(Pane(), "Starting");
    ASSERT_TRUE(Until([] { return Pane() == "Stopped"; }));
    EXPECT_EQ(Image(), "Total: 9");
    // The file that is no picture took no pane.
    std::vector<std::string> names;
    for (int pane = 0; pane < 6; ++pane) {
        EXPECT_TRUE(Shows(pane, pane < 2 ? pane + 7 : pane + 1)) << pane;
        EXPECT_TRUE(PaneFrame(pane).rect().contains(PaneImage(pane).geometry())) << pane;
        names.push_back(NameIn(pane));
    }
    EXPECT_THAT(names, ElementsAre("p7.jpg", "p8.GIF", "p3.jpg", "p4.GIF", "p5.jpg", "p6.GIF"));

    // Once more, from the pane where the circle had come to; round and round.
    Check("chkOptions(0)", true);
    ChooseMenu("frmSlideShow/mnuStart");
    ASSERT_TRUE(Until([] { return Image() == "Displaying 10 of 9"; }));
    EXPECT_EQ(NameIn(2), "p7.jpg");
    ASSERT_TRUE(Until([] { return Image() == "Displaying 2 of 9"; }));
    ChooseMenu("frmSlideShow/mnuPause");
    EXPECT_EQ(Pane(), "Paused");
    const std::string paused = Image();
    QTest::qWait(50);
    EXPECT_EQ(Image(), paused);
    Click(Button(0));
    ASSERT_TRUE(Until([&] { return Image() == "Displaying 4 of 9"; }));
    ChooseMenu("frmSlideShow/mnuStop");
    EXPECT_EQ(Image(), "Total: 9");
    EXPECT_EQ(Pane(), "Stopped");

    // A double click shows that file, and a start goes on behind it.
    DoubleClickRow("lstFiles", 4);
    EXPECT_EQ(Image(), "Displaying 5 of 9");
    Click(Button(0));
    ASSERT_TRUE(Until([] { return Image() == "Displaying 6 of 9"; }));
    QTest::mouseClick(&PaneImage(3), Qt::LeftButton);
    ChooseMenu("frmSlideShow/mnuExit");
    EXPECT_FALSE(IsVisible("frmSlideShow"));
    EXPECT_EQ(settings.GetSetting("SlideShow", "3") + settings.GetSetting("SlideShow", "4"), "110");
    ChooseMenu("mnuSlideShow");
    EXPECT_TRUE(IsChecked("chkOptions(0)"));
    EXPECT_TRUE(ShowsNothing(0));
    EXPECT_FALSE(IsHighlighted(3));
    QTest::mouseClick(&PaneFrame(0), Qt::LeftButton, {}, {2, 2});
    EXPECT_FALSE(IsHighlighted(0)); // selected from the start, without a highlight
    DoubleClickRow("lstFiles", 0);
    EXPECT_EQ(NameIn(0), "p1.jpg");
    ChooseMenu("mnuSlideShow");
    EXPECT_FALSE(IsVisible("frmSlideShow"));
}

TEST_F(SlideShowTest, ThePictureOfAPane)
{
    Open(3);
    DoubleClickRow("lstFiles", 0);
    DoubleClickRow("lstFiles", 1);
    DoubleClickRow("lstFiles", 3);

    // At first pane 0 is selected without a highlight, so that a click ends the selection.
    Click(Button(3));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p1.jpg");
    QTest::mouseClick(&PaneFrame(0), Qt::LeftButton, {}, {2, 2});
    EXPECT_FALSE(IsHighlighted(0));
    Click(Button(2));
    Click(Button(4));
    EXPECT_TRUE(Shows(0, 1) && Shows(1, 2) && Shows(2, 3));
    QTest::mouseClick(&PaneImage(1), Qt::LeftButton);
    EXPECT_TRUE(IsHighlighted(1));
    QTest::mouseClick(&PaneImage(2), Qt::LeftButton);
    EXPECT_FALSE(IsHighlighted(1));
    EXPECT_TRUE(IsHighlighted(2));
    Click(Button(3));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p3.jpg");
    // Cleared, it keeps its names: the viewer comes up and does not change.
    Find<QWidget>(Button(4)).setFocus();
    QTest::keyClick(&Find<QWidget>(Button(4)), Qt::Key_Return);
    EXPECT_TRUE(ShowsNothing(2));
    EXPECT_FALSE(IsHighlighted(2));
    EXPECT_EQ(NameIn(2), "p3.jpg");
    EXPECT_TRUE(FileExists(destination + "p3.jpg"));

    // The keyboard does the same.
    QTest::keyClick(&PaneFrame(1), Qt::Key_Space);
    EXPECT_TRUE(IsHighlighted(1));
    QTest::keyClick(&PaneFrame(0), Qt::Key_Return);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p1.jpg");
    QTest::keyClick(&PaneFrame(1), Qt::Key_Space);
    EXPECT_FALSE(IsHighlighted(1));

    // A double click is a click too.
    QTest::mouseClick(&PaneImage(1), Qt::LeftButton);
    QTest::mouseDClick(&PaneImage(1), Qt::LeftButton);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p2.GIF");
    EXPECT_TRUE(IsHighlighted(1));
    Click(Button(2));
    EXPECT_FALSE(FileExists(destination + "p2.GIF"));
    EXPECT_TRUE(ShowsNothing(1));
    EXPECT_EQ(Image(), "Total: 3");

    // With its check box on, the viewer follows.
    Check("Check1", true);
    DoubleClickRow("lstFiles", 2);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p3.jpg");
    EXPECT_THAT(desktop.boxes, IsEmpty());
}

TEST_F(SlideShowTest, ASlowPictureGivesWay)
{
    Open(2);
    MakeFile(destination + "p1.jpg", SlowJpeg());
    // While the first file is being read, the user goes on: to another file, to the window's end, and to a new one.
    QTimer::singleShot(200, [] { DoubleClickRow("lstFiles", 1); });
    DoubleClickRow("lstFiles", 0);
    EXPECT_EQ(NameIn(0), "p2.GIF");
    EXPECT_TRUE(Shows(0, 2));
    EXPECT_TRUE(ShowsNothing(1));

    bool closed = false;
    QTimer::singleShot(200, [&] {
        WindowNamed("frmSlideShow")->close();
        closed = !IsVisible("frmSlideShow");
        ChooseMenu("mnuSlideShow");
    });
    DoubleClickRow("lstFiles", 0);
    EXPECT_TRUE(closed);
    EXPECT_TRUE(IsVisible("frmSlideShow"));
    EXPECT_TRUE(ShowsNothing(0));
    EXPECT_EQ(Image(), "Total: 3");

    // One that comes in the end, but after a stop.
    QImage(7500, 7500, QImage::Format_Mono).save((destination + "p1.jpg").c_str(), "png");
    bool stopped = false;
    QTimer::singleShot(60, [&] {
        Click(Button(1));
        stopped = true;
    });
    DoubleClickRow("lstFiles", 0);
    EXPECT_TRUE(stopped);
    EXPECT_EQ(NameIn(0), "");
    DoubleClickRow("lstFiles", 0);
    EXPECT_EQ(NameIn(0), "p1.jpg");
}

TEST_F(SlideShowTest, TheKeyboardGoesRoundAsThingsLie)
{
    Open(1);
    QWidget& window = *WindowNamed("frmSlideShow");
    window.activateWindow();
    Find<QWidget>("frmSlideShow/Drive1").setFocus();
    std::string names;
    for (int press = 0; press < 18; ++press) {
        QWidget& widget = *window.focusWidget();
        names += widget.objectName().toStdString() + " ";
        const auto* button = qobject_cast<const QAbstractButton*>(&widget);
        EXPECT_TRUE(!widget.accessibleName().isEmpty() || button != nullptr) << names;
        QTest::keyClick(&widget, Qt::Key_Tab);
    }
    EXPECT_EQ(names,
        "Drive1 Dir1 lstFiles chkOptions(0) Command1(7) txtDelay Command1(0) Command1(5) Command1(1) Command1(2) "
        "Command1(3) Command1(4) SSPanel1(0) SSPanel1(1) SSPanel1(2) SSPanel1(3) SSPanel1(4) SSPanel1(5) ");
    EXPECT_FALSE(Find<QWidget>(Button(2)).toolTip().isEmpty());
    EXPECT_FALSE(IsEnabled(Button(6))); // a backdrop

    // The pane with the focus has an edge, which is not the frame beneath.
    QWidget& frame = PaneFrame(1);
    const auto isMarked = [&](QWidget::RenderFlags parts) {
        QImage image(frame.size(), QImage::Format_RGB32);
        frame.render(&image, {}, {}, parts);
        return image.pixelColor(0, frame.height() / 2) == frame.palette().color(QPalette::Highlight);
    };
    EXPECT_FALSE(isMarked(QWidget::DrawWindowBackground | QWidget::DrawChildren));
    frame.setFocus();
    ASSERT_TRUE(Until([&] { return frame.hasFocus(); }));
    EXPECT_TRUE(isMarked(QWidget::DrawWindowBackground | QWidget::DrawChildren));
    EXPECT_FALSE(isMarked(QWidget::DrawWindowBackground));
    EXPECT_EQ(frame.childAt(0, 0), nullptr) << "the edge would take the clicks";
}

TEST_F(SlideShowTest, APlaceOffTheScreenIsNone)
{
    Start();
    const QSize screen = QApplication::primaryScreen()->size();
    for (const auto& [left, top, shown] : {std::tuple(90, 80, QPoint(90, 80)), {0, 0, {0, 0}}, {-5, 80, {0, 80}},
             {screen.width() - 100, 80, {0, 80}}, {90, screen.height() - 100, {90, 0}}}) {
        settings.SaveSetting("SlideShow", "1", std::to_string(Twips::FromPixels(left)));
        settings.SaveSetting("SlideShow", "2", std::to_string(Twips::FromPixels(top)));
        ChooseMenu("mnuSlideShow");
        EXPECT_EQ(WindowNamed("frmSlideShow")->pos(), shown) << left << ' ' << top;
        WindowNamed("frmSlideShow")->close();
    }
}

TEST_F(SlideShowTest, ListAndDelay)
{
    std::filesystem::create_directories(destination + "none");
    Open(1);
    ClickRow("Dir1", CurrentRow("Dir1") + 1);
    EXPECT_EQ(Image(), "Total: 0");
    Click(Button(0));
    EXPECT_EQ(PanelText("frmSlideShow/StatusBar1", 3), "No Images");
    EXPECT_EQ(Pane(), "Stopped");
    MakeFile(destination + "none/new.ICO", "");
    EXPECT_THAT(RowsOf("lstFiles"), IsEmpty());
    Click(Button(7));
    EXPECT_THAT(RowsOf("lstFiles"), ElementsAre("new.ICO"));
    EXPECT_EQ(Image(), "Total: 0");

    for (const auto& [typed, shown] :
        {std::pair("0", "1"), {"-5", "1"}, {"x", "1"}, {"0.5", "1"}, {"12.5", "12.5"}, {"70000 ms", "70000 ms"}}) {
        Find<QLineEdit>("txtDelay").setText(typed);
        EXPECT_EQ(TextOf("txtDelay"), shown) << typed;
    }
    Click(Button(0));
    EXPECT_EQ(TextOf("txtDelay"), "70000");
    Click(Button(1));
    Step("UpDown1", 1);
    EXPECT_EQ(TextOf("txtDelay"), "35000");
}
