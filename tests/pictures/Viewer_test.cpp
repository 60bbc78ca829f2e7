#include "tests/pictures/PicturesTest.h"
#include "tests/shell/ProgramTest.h"

#include "base/Files.h"
#include "demo/sample/Encoders.h"
#include "demo/sample/SamplePictures.h"
#include "platform/Events.h"
#include "tests/support/HostilePictures.h"

#include <QAction>
#include <QScreen>
#include <QTest>
#include <QTimer>

using testing::ElementsAre;

namespace {

const std::string shown = "frmShowPicture/Image1";

const std::string wide = DrawPicture(Scene::Kites, 80, 40, 1, "JPEG");
const std::string high = DrawPicture(Scene::Harbour, 20, 40, 1, "JPEG");
const std::string square = DrawPicture(Scene::Mosaic, 40, 40, 1, "JPEG");

class ViewerTest : public PicturesTest {
protected:
    void SearchFor(const std::vector<std::string>& bodies)
    {
        server.SetGroups({GroupOf("alt.kites", 1, bodies)});
        Forget();
        Search();
    }

    SampleServer server{{}};
};

}

TEST_F(ViewerTest, ASlotIsViewedClearedAndDeleted)
{
    Start({"alt.kites"}, server.Port());
    const int low = WindowNamed("frmTamarack")->height();
    ChooseMenu("mnuInteractiveDownload");
    EXPECT_GT(WindowNamed("frmTamarack")->height(), low);
    SearchFor({Uuencode(wide, "wide.jpg"), Uuencode("no picture", "odd.jpg"), Uuencode(high, "high.jpg")});
    EXPECT_TRUE(Shows("Image2(0)", high) && Shows("Image2(1)", wide) && ShowsNothing("Image2(2)"));
    EXPECT_EQ(TextOf("Label2(0)") + TextOf("Label2(1)") + TextOf("Label2(2)"), "high.jpgwide.jpg<filename>");
    server.SetGroups({GroupOf("alt.kites", 5, {Uuencode(square, "square.jpg")})});
    Search();
    EXPECT_TRUE(Shows("Image2(0)", square) && Shows("Image2(1)", high) && Shows("Image2(2)", wide));
    ChooseMenu("mnuInteractiveDownload");
    EXPECT_EQ(WindowNamed("frmTamarack")->height(), low);
    EXPECT_FALSE(IsVisible("Frame3"));
    ChooseMenu("mnuInteractiveDownload");

    EXPECT_FALSE(IsVisible("frmShowPicture"));
    Click("frmTamarack/Command2(1)");
    EXPECT_TRUE(IsVisible("frmShowPicture"));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "high.jpg");
    EXPECT_TRUE(Shows(shown, high));
    QTest::mouseDClick(&Find<QWidget>("Image2(2)"), Qt::LeftButton);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "wide.jpg");
    EXPECT_TRUE(Shows(shown, wide));
    EXPECT_TRUE(Find<QAction>("mnuSizeableViewer").isChecked());

    // The viewer's own buttons: the picture that is shown goes, and its file; the slot keeps showing it.
    Click("frmShowPicture/Command1");
    EXPECT_TRUE(ShowsNothing(shown));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "");
    EXPECT_TRUE(FileExists(Stored("wide.jpg")));
    Click("frmShowPicture/Command2");
    EXPECT_FALSE(FileExists(Stored("wide.jpg")));
    EXPECT_TRUE(Shows("Image2(2)", wide));
    // Viewed again, its file is gone: an empty viewer under its name.
    Click("frmTamarack/Command2(2)");
    EXPECT_EQ(CaptionOf("frmShowPicture"), "wide.jpg");
    EXPECT_TRUE(ShowsNothing(shown));

    // A cleared slot opens the viewer on what it holds already; Delete still finds the file.
    Click("frmTamarack/Command2(0)");
    Click("cmdClear(0)");
    EXPECT_EQ(TextOf("Label2(0)"), "");
    EXPECT_TRUE(ShowsNothing("Image2(0)"));
    WindowNamed("frmShowPicture")->close();
    Click("frmTamarack/Command2(0)");
    EXPECT_TRUE(IsVisible("frmShowPicture"));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "<Filename Here>");
    Click("cmdDelete(0)");
    EXPECT_FALSE(FileExists(Stored("square.jpg")));
    Click("cmdDelete(1)");
    EXPECT_TRUE(ShowsNothing("Image2(1)"));
    EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/odd.jpg"));
}

TEST_F(ViewerTest, FollowsTheSearch)
{
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuSizeableViewer");
    Check("Check1", true);
    std::vector<std::string> names;
    QObject::connect(WindowNamed("frmShowPicture"), &QWidget::windowTitleChanged, qApp,
        [&](const QString& title) { names.push_back(title.toStdString()); });
    SearchFor({Uuencode(wide, "wide.jpg"), Uuencode("no picture", "odd.jpg"), Uuencode(square, "square.jpg")});
    EXPECT_THAT(names, ElementsAre("wide.jpg", "square.jpg"));
    EXPECT_TRUE(Shows(shown, square));

    Click("frmShowPicture/Command1");
    Click("cmdViewCurrent");
    EXPECT_TRUE(Shows(shown, square));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "square.jpg");
    Click("frmShowPicture/Command2");
    EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/odd.jpg", "alt.kites/wide.jpg"));

    // Closed, it lets go of the search.
    QTest::keyClick(&Find<QWidget>("Check1"), Qt::Key_Escape);
    EXPECT_FALSE(Find<QAction>("mnuSizeableViewer").isChecked());
    EXPECT_FALSE(IsVisible("frmShowPicture"));
    Forget();
    Search();
    EXPECT_FALSE(IsVisible("frmShowPicture"));
    ChooseMenu("mnuSizeableViewer");
    EXPECT_FALSE(IsChecked("Check1"));
}

TEST_F(ViewerTest, ASlowPictureHoldsNobody)
{
    const std::string slow = Uuencode(SlowJpeg(), "slow.jpg");
    server.SetGroups({GroupOf("alt.kites", 1, {slow, slow, slow})});
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuInteractiveDownload");
    // The end of what is before the picture, and of a search that is stopped while it is being read.
    atCaption["Finished decoding 2 of 4 -- alt.kites"] = [this] {
        QTimer::singleShot(300, [this] {
            EXPECT_TRUE(FileExists(Stored("slow.jpg")));
            EXPECT_FALSE(IsEnabled("cmdFindNow"));
            Click("cmdStop");
        });
    };
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1");
    EXPECT_TRUE(ShowsNothing("Image2(0)"));

    // "Exit" does not wait for it.
    desktop.atEndProgram = [this] { EXPECT_FALSE(IsEnabled("cmdFindNow")); };
    atCaption["Finished decoding 3 of 4 -- alt.kites"] = [] {
        QTimer::singleShot(300, [] {
            Click("frmTamarack/Command1");
            Click("cmdStop");
        });
    };
    Search();
    EXPECT_EQ(desktop.programEnds, 1);

    // A viewer that is closed while it waits stays so. The file behind a slot has become another one.
    SearchFor({Uuencode(wide, "slow.jpg")});
    MakeFile(Stored("slow.jpg"), SlowJpeg());
    ChooseMenu("mnuSizeableViewer");
    QTimer::singleShot(300, [] { WindowNamed("frmShowPicture")->close(); });
    Click("frmTamarack/Command2(0)");
    EXPECT_FALSE(IsVisible("frmShowPicture"));
    EXPECT_FALSE(Find<QAction>("mnuSizeableViewer").isChecked());
}

TEST_F(ViewerTest, KeepsItsPlaceOnTheScreen)
{
    Start();
    ChooseMenu("mnuSizeableViewer");
    QWidget& window = *WindowNamed("frmShowPicture");
    window.setGeometry(70, 60, 500, 400);
    QWidget& panel = Find<QWidget>("frmShowPicture/SSPanel1");
    EXPECT_NEAR(panel.geometry().bottom(), 394, 2);
    EXPECT_NEAR(panel.width(), 496, 2);
    window.resize(500, 40); // too low for the panel to follow
    EXPECT_NEAR(panel.width(), 496, 2);
    window.setGeometry(70, 60, 500, 400);
    window.close();
    ChooseMenu("mnuSizeableViewer");
    EXPECT_EQ(window.size(), QSize(500, 400));
    window.close();
    for (const char* key : {"1", "2"})
        settings.SaveSetting("PictureView", key, std::to_string(Twips::FromPixels(90)));
    ChooseMenu("mnuSizeableViewer");
    EXPECT_EQ(window.pos(), QPoint(90, 90));

    // Over the edges of the screen (of 800 by 800 pixels), and back on the next resize.
    const QSize screen = QApplication::primaryScreen()->size();
    window.move(screen.width() - 100, screen.height() - 100);
    window.resize(501, 401);
    DoEvents();
    EXPECT_NEAR(window.x() + 501, screen.width() - Twips::ToPixels(Form::designedBorders), 1);
    // The window's lower edge, its title counted in, stays 500 twips above the screen's.
    EXPECT_NEAR(window.y() + 401, screen.height() - Twips::ToPixels(875), 1);
    window.move(-30, -20);
    window.resize(500, 400);
    DoEvents();
    EXPECT_EQ(window.pos(), QPoint());
    // Any other press than the one that opens the debug window does nothing.
    QTest::mouseClick(&panel, Qt::LeftButton, Qt::ControlModifier);
    ChooseMenu("mnuSizeableViewer");
    EXPECT_FALSE(IsVisible("frmShowPicture") || IsVisible("frmDebug"));

    for (const char* value : {"1e99", "-1e99", "x", ""}) {
        for (const char* key : {"1", "2", "3", "4"})
            settings.SaveSetting("PictureView", key, value);
        ChooseMenu("mnuSizeableViewer");
        EXPECT_TRUE(QRect(QPoint(), screen).intersects(window.geometry())) << value;
        EXPECT_TRUE(QRect(QPoint(), screen).size().expandedTo(window.size()) == screen) << value;
        ChooseMenu("mnuSizeableViewer");
    }
}
