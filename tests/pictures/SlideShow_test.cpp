#include "base/Files.h"
#include "tests/pictures/PicturesTest.h"
#include "tests/support/HostilePictures.h"

#include <QLineEdit>

#include <filesystem>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SlideShowTest : public PicturesTest {
protected:
    SlideShowTest() { settings.SaveSetting("SlideShow", "4", "-10"); }

    // So many pictures, what is none, and what does not belong into the list.
    void Open(int pictures)
    {
        for (int number = 1; number <= pictures; ++number)
            MakeFile(destination + "p" + std::to_string(number) + (number % 2 ? ".jpg" : ".GIF"), Drawn(number));
        for (const char* name : {"p2a.bmp", ".p3.jpg", "p3.png"})
            MakeFile(destination + name, "no picture");
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
    static std::string ImageOf(int pane) { return "PreviewImage(" + std::to_string(pane) + ")"; }
    static QWidget& Frame(int pane) { return Find<QWidget>("frmSlideShow/SSPanel1(" + std::to_string(pane) + ")"); }

    static bool Shows(int pane, int number) { return PicturesTest::Shows(ImageOf(pane), Drawn(number)); }
    static bool ShowsNothing(int pane) { return PicturesTest::ShowsNothing(ImageOf(pane)); }
    static bool IsHighlighted(int pane) { return Frame(pane).backgroundRole() == QPalette::Highlight; }

    // The name of the file in a pane, as the third panel tells it.
    static std::string NameIn(int pane)
    {
        QWidget& image = Find<QWidget>(ImageOf(pane));
        QTest::mouseMove(&image, QPoint(2, 2));
        QTest::mouseMove(&image, image.rect().center());
        return PanelText("frmSlideShow/StatusBar1", 3);
    }
};

}

TEST_F(SlideShowTest, SixPanesInACircle)
{
    Open(8);
    EXPECT_EQ(TextOf("txtDelay"), "10");
    EXPECT_FALSE(IsEnabled(Button(6))) << "a backdrop";
    EXPECT_THAT(RowsOf("lstFiles"),
        ElementsAre("p1.jpg", "p2.GIF", "p2a.bmp", "p3.jpg", "p4.GIF", "p5.jpg", "p6.GIF", "p7.jpg", "p8.GIF"));
    Click(Button(0));
    EXPECT_EQ(Pane(), "Starting");
    ASSERT_TRUE(Until([] { return Pane() == "Stopped"; }));
    EXPECT_EQ(Image(), "Total: 9");
    // The file that is no picture took no pane.
    for (int pane = 0; pane < 6; ++pane)
        EXPECT_TRUE(Shows(pane, pane < 2 ? pane + 7 : pane + 1)) << pane;
    EXPECT_EQ(NameIn(1) + NameIn(2), "p8.GIFp3.jpg");

    // Once more, from the pane where the circle had come to; round and round.
    Check("chkOptions(0)", true);
    ChooseMenu("frmSlideShow/mnuStart");
    ASSERT_TRUE(Until([] { return Image() == "Displaying 10 of 9"; }));
    EXPECT_EQ(NameIn(2), "p7.jpg");
    ChooseMenu("frmSlideShow/mnuPause");
    EXPECT_EQ(Pane(), "Paused");
    EXPECT_FALSE(Until([] { return Image() != "Displaying 10 of 9"; }, std::chrono::milliseconds(50)));
    Click(Button(0));
    ASSERT_TRUE(Until([] { return Image() == "Displaying 4 of 9"; }));
    ChooseMenu("frmSlideShow/mnuStop");
    EXPECT_EQ(Image() + Pane(), "Total: 9Stopped");

    // A double click shows that file, and a start goes on behind it.
    DoubleClickRow("lstFiles", 4);
    EXPECT_EQ(Image(), "Displaying 5 of 9");
    Click(Button(0));
    ASSERT_TRUE(Until([] { return Image() == "Displaying 6 of 9"; }));
    Click(ImageOf(3));
    ChooseMenu("frmSlideShow/mnuExit");
    EXPECT_EQ(settings.GetSetting("SlideShow", "3") + settings.GetSetting("SlideShow", "4"), "110");
    ChooseMenu("mnuSlideShow");
    EXPECT_TRUE(IsChecked("chkOptions(0)"));
    EXPECT_TRUE(ShowsNothing(0) && !IsHighlighted(3));
    DoubleClickRow("lstFiles", 0);
    EXPECT_EQ(NameIn(0), "p1.jpg");
}

TEST_F(SlideShowTest, ThePictureOfAPane)
{
    Open(3);
    for (const int row : {0, 1, 3})
        DoubleClickRow("lstFiles", row);

    // At first pane 0 is selected without a highlight, so that a click ends the selection.
    QTest::mouseClick(&Frame(0), Qt::LeftButton, {}, {2, 2});
    EXPECT_FALSE(IsHighlighted(0));
    Click(Button(2));
    Click(Button(4));
    EXPECT_TRUE(Shows(0, 1) && Shows(1, 2) && Shows(2, 3));
    Click(ImageOf(1));
    Click(ImageOf(2));
    EXPECT_TRUE(!IsHighlighted(1) && IsHighlighted(2));
    // Cleared, it keeps its names.
    Click(Button(4));
    EXPECT_TRUE(ShowsNothing(2) && !IsHighlighted(2));
    EXPECT_EQ(NameIn(2), "p3.jpg");

    // With the keyboard, and with a double click, which is a click too.
    QTest::keyClick(&Frame(1), Qt::Key_Space);
    EXPECT_TRUE(IsHighlighted(1));
    QTest::keyClick(&Frame(0), Qt::Key_Return);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p1.jpg");
    QTest::mouseDClick(&Find<QWidget>(ImageOf(1)), Qt::LeftButton);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "p2.GIF");
    EXPECT_TRUE(IsHighlighted(1));
    Click(Button(2));
    EXPECT_FALSE(FileExists(destination + "p2.GIF"));
    EXPECT_TRUE(ShowsNothing(1) && !IsHighlighted(1) && Shows(0, 1));
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
    MakeFile(destination + "p1.jpg", SlowJpeg(15));
    // While the first file is being read, the user goes on: to another file, to the window's end and a new one, to a
    // stop.
    const std::function<void()> steps[] = {[] { DoubleClickRow("lstFiles", 1); },
        [] {
            WindowNamed("frmSlideShow")->close();
            EXPECT_FALSE(IsVisible("frmSlideShow"));
            ChooseMenu("mnuSlideShow");
        },
        [] { Click(Button(1)); }};
    for (const auto& step : steps) {
        bool done = false;
        QTimer::singleShot(100, [&] { step(), done = true; });
        DoubleClickRow("lstFiles", 0);
        EXPECT_TRUE(done);
        EXPECT_EQ(NameIn(0), &step == steps ? "p2.GIF" : "");
        EXPECT_TRUE(&step == steps ? Shows(0, 2) && ShowsNothing(1) : ShowsNothing(0));
    }
    EXPECT_EQ(Image(), "Total: 3");
    DoubleClickRow("lstFiles", 0);
    EXPECT_EQ(NameIn(0), "p1.jpg");
}

TEST_F(SlideShowTest, ThePaneWithTheFocusHasAnEdge)
{
    Open(1);
    WindowNamed("frmSlideShow")->activateWindow();
    // Which is not the frame beneath, nor takes the clicks.
    QWidget& frame = Frame(1);
    for (const bool focused : {false, true}) {
        focused ? frame.setFocus() : frame.clearFocus();
        ASSERT_TRUE(Until([&] { return frame.hasFocus() == focused; }));
        const QColor edge = frame.grab().toImage().pixelColor(0, frame.height() / 2);
        EXPECT_EQ(edge == frame.palette().color(QPalette::Highlight), focused);
    }
    EXPECT_EQ(frame.childAt(0, 0), nullptr);
}

TEST_F(SlideShowTest, ListAndDelay)
{
    std::filesystem::create_directories(destination + "none");
    Open(1);
    ClickRow("Dir1", CurrentRow("Dir1") + 1);
    EXPECT_EQ(Image(), "Total: 0");
    EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);
    Click(Button(0));
    EXPECT_EQ(PanelText("frmSlideShow/StatusBar1", 3) + Pane(), "No ImagesStopped");
    MakeFile(destination + "none/new.ICO", "");
    EXPECT_THAT(RowsOf("lstFiles"), IsEmpty());
    Click(Button(7));
    EXPECT_THAT(RowsOf("lstFiles"), ElementsAre("new.ICO"));

    for (const auto& [typed, shown] :
        {std::pair("0", "1"), {"-5", "1"}, {"x", "1"}, {"0.5", "1"}, {"12.5", "12.5"}, {"70000 ms", "70000 ms"}}) {
        Find<QLineEdit>("txtDelay").setText(typed);
        EXPECT_EQ(TextOf("txtDelay"), shown) << typed;
    }
    Click(Button(0));
    EXPECT_EQ(TextOf("txtDelay"), "70000");
    Step("UpDown1", 1);
    EXPECT_EQ(TextOf("txtDelay"), "35000");
}
