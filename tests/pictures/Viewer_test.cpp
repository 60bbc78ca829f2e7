#include "base/Files.h"
#include "demo/sample/Encoders.h"
#include "platform/Events.h"
#include "tests/pictures/PicturesTest.h"
#include "tests/support/HostilePictures.h"

#include <QAction>
#include <QClipboard>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QScreen>
#include <QUrl>

using testing::ElementsAre;

namespace {

const std::string shown = "frmShowPicture/Image1";

const std::string wide = DrawPicture(Scene::Kites, 80, 40, 1, "JPEG");
const std::string high = DrawPicture(Scene::Harbour, 20, 40, 1, "JPEG");
const std::string square = DrawPicture(Scene::Mosaic, 40, 40, 1, "JPEG");

class ViewerTest : public PicturesTest {
protected:
    void SearchFor(const std::vector<std::string>& bodies, int first = 1)
    {
        server.SetGroups({GroupOf("alt.kites", first, bodies)});
        Search();
    }

    std::string Stored(const std::string& name) const { return destination + "alt.kites/" + name; }

    SampleServer server{{}};
};

}

TEST_F(ViewerTest, ASlotIsViewedClearedAndDeleted)
{
    Start({"alt.kites"}, server.Port());
    const int low = WindowNamed("frmTamarack")->height();
    for (const bool grown : {true, false, true}) {
        ChooseMenu("mnuInteractiveDownload");
        EXPECT_EQ(WindowNamed("frmTamarack")->height() > low, grown);
    }
    SearchFor({Uuencode(wide, "wide.jpg"), Uuencode("no picture", "odd.jpg"), Uuencode(high, "high.jpg")});
    EXPECT_TRUE(Shows("Image2(0)", high) && Shows("Image2(1)", wide) && ShowsNothing("Image2(2)"));
    EXPECT_EQ(TextOf("Label2(0)") + TextOf("Label2(1)") + TextOf("Label2(2)"), "high.jpgwide.jpg<filename>");
    SearchFor({Uuencode(square, "square.jpg")}, 5);
    EXPECT_TRUE(Shows("Image2(0)", square) && Shows("Image2(1)", high) && Shows("Image2(2)", wide));
    Click("frmTamarack/Command2(1)");
    EXPECT_EQ(CaptionOf("frmShowPicture"), "high.jpg");
    EXPECT_TRUE(Shows(shown, high));
    QTest::mouseDClick(&Find<QWidget>("Image2(2)"), Qt::LeftButton);
    EXPECT_EQ(CaptionOf("frmShowPicture"), "wide.jpg");
    EXPECT_TRUE(Shows(shown, wide));
    EXPECT_TRUE(Find<QAction>("mnuSizeableViewer").isChecked());

    // The viewer's own buttons: the picture that is shown goes, and its file; the slot keeps showing it.
    for (const char* button : {"frmShowPicture/Command1", "frmShowPicture/Command2"}) {
        Click(button);
        EXPECT_TRUE(ShowsNothing(shown) && Shows("Image2(2)", wide));
        EXPECT_EQ(CaptionOf("frmShowPicture"), "");
        EXPECT_EQ(FileExists(Stored("wide.jpg")), std::string(button).ends_with("1"));
    }
    // Viewed again, its file is gone: an empty viewer under its name.
    Click("frmTamarack/Command2(2)");
    EXPECT_EQ(CaptionOf("frmShowPicture"), "wide.jpg");
    EXPECT_TRUE(ShowsNothing(shown));

    // A cleared slot has nothing to open the viewer on; Delete still finds the file.
    Click("cmdClear(0)");
    EXPECT_TRUE(TextOf("Label2(0)").empty() && ShowsNothing("Image2(0)"));
    WindowNamed("frmShowPicture")->close();
    Click("frmTamarack/Command2(0)");
    EXPECT_EQ(CaptionOf("frmShowPicture"), "<Filename Here>");
    Click("cmdDelete(0)");
    Click("cmdDelete(1)");
    EXPECT_TRUE(ShowsNothing("Image2(1)"));
    EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/odd.jpg"));
}

TEST_F(ViewerTest, FollowsTheSearch)
{
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuSizeableViewer");
    Check("Check1", true);
    SearchFor({Uuencode(wide, "wide.jpg"), Uuencode("no picture", "odd.jpg"), Uuencode(square, "square.jpg")});
    EXPECT_TRUE(Shows(shown, square));
    Click("frmShowPicture/Command1");
    Click("cmdViewCurrent");
    EXPECT_TRUE(Shows(shown, square));
    EXPECT_EQ(CaptionOf("frmShowPicture"), "square.jpg");
    Click("frmShowPicture/Command2");
    EXPECT_THAT(FilesBelow(destination), ElementsAre("alt.kites/odd.jpg", "alt.kites/wide.jpg"));
    EXPECT_TRUE(ShowsNothing(shown) && CaptionOf("frmShowPicture").empty());

    // Closed, it lets go of the search.
    QTest::keyClick(&Find<QWidget>("Check1"), Qt::Key_Escape);
    EXPECT_FALSE(Find<QAction>("mnuSizeableViewer").isChecked());
    SearchFor({Uuencode(high, "high.jpg")}, 5);
    EXPECT_FALSE(IsVisible("frmShowPicture"));
    ChooseMenu("mnuSizeableViewer");
    EXPECT_FALSE(IsChecked("Check1"));
    QWidget& panel = Find<QWidget>("frmShowPicture/SSPanel1");
    QTest::mouseClick(&panel, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_TRUE(IsVisible("frmShowPicture") && !IsVisible("frmDebug")) << "another press opens the debug window";
}

TEST_F(ViewerTest, ThePicturesMenuAndThatOfTheBanner)
{
    const QImage banner(QStringLiteral(":/artwork/banner.svg"));
    ASSERT_FALSE(banner.isNull());
    WhenUp("frmBanner", [&] { EXPECT_TRUE(LooksLike(Find<QWidget>("frmBanner/Picture"), banner)); });
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuInteractiveDownload");
    SearchFor({Uuencode(wide, "wide.jpg")});
    for (const int entry : {0, 1, 3, 2}) {
        AtNextYield([entry] {
            auto& menu = dynamic_cast<QMenu&>(*QApplication::activePopupWidget());
            menu.setActiveAction(menu.actions().at(entry));
            QTest::keyClick(&menu, Qt::Key_Return);
        });
        QContextMenuEvent asked(QContextMenuEvent::Mouse, {5, 5}, {5, 5});
        QApplication::sendEvent(&Find<QWidget>("Image2(0)"), &asked);
        EXPECT_EQ(QApplication::clipboard()->text(), entry == 3 ? "wide.jpg" : "");
    }
    EXPECT_EQ(QApplication::clipboard()->image().size(), QSize(80, 40));
    EXPECT_THAT(
        desktop.opened, ElementsAre(AddressOfFile(Stored("wide.jpg")), AddressOfFile(destination + "alt.kites/")));
}

// As far as the toolkit, which drags nothing on a screen that nobody sees.
TEST_F(ViewerTest, APictureIsDraggedOutAsItsFile)
{
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuInteractiveDownload");
    SearchFor({Uuencode(wide, "wide.jpg")});
    for (const auto& [name, beyond] : {std::pair("Image2(0)", -1), {"Image2(1)", 0}, {"Image2(0)", 0}}) {
        auto& image = Find<QWidget>(name);
        QTest::mousePress(&image, Qt::LeftButton, {}, {5, 5});
        const QPointF place(5 + QApplication::startDragDistance() + beyond, 5);
        QMouseEvent move(QEvent::MouseMove, place, place, {}, Qt::LeftButton, {});
        QApplication::sendEvent(&image, &move);
        const auto* drag = image.findChild<QDrag*>();
        EXPECT_EQ(drag != nullptr ? drag->mimeData()->urls().value(0).toLocalFile().toStdString() : "",
            ShowsNothing(name) || beyond < 0 ? "" : Stored("wide.jpg"));
    }
}

TEST_F(ViewerTest, ASlowPictureHoldsNobody)
{
    const std::string endless = Uuencode(SlowJpeg(), "endless.jpg");
    server.SetGroups({GroupOf("alt.kites", 1, {endless, endless})});
    Start({"alt.kites"}, server.Port());
    ChooseMenu("mnuInteractiveDownload");
    // The end of a search that is stopped while a picture is being read; "Exit" does not wait for it.
    atCaption["Finished decoding 2 of 3 -- alt.kites"] = [this] {
        QTimer::singleShot(100, [this] {
            EXPECT_TRUE(FileExists(Stored("endless.jpg")));
            Click("frmTamarack/Command1");
            EXPECT_FALSE(IsEnabled("cmdFindNow"));
            Click("cmdStop");
        });
    };
    Search();
    EXPECT_EQ(desktop.programEnds, 1);
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1");
    EXPECT_TRUE(ShowsNothing("Image2(0)")) << "it was given up";

    // A viewer that is closed while it waits stays so. The file behind a slot has become another one.
    SearchFor({Uuencode(wide, "slow.jpg")}, 5);
    MakeFile(Stored("slow.jpg"), SlowJpeg(15));
    ChooseMenu("mnuSizeableViewer");
    QTimer::singleShot(100, [] { WindowNamed("frmShowPicture")->close(); });
    Click("frmTamarack/Command2(0)");
    EXPECT_FALSE(IsVisible("frmShowPicture"));
    EXPECT_FALSE(Find<QAction>("mnuSizeableViewer").isChecked());
}

TEST_F(ViewerTest, KeepsItsPlaceOnTheScreen)
{
    Start();
    ChooseMenu("mnuSizeableViewer");
    QWidget& window = *WindowNamed("frmShowPicture");
    QWidget& panel = Find<QWidget>("frmShowPicture/SSPanel1");
    for (const int height : {400, 40, 400}) { // too low for the panel to follow meanwhile
        window.setGeometry(70, 60, 500, height);
        EXPECT_NEAR(panel.geometry().bottom(), 394, 2);
        EXPECT_NEAR(panel.width(), 496, 2);
    }
    // Over the edges of the screen (of 800 by 800 pixels), and back on the next resize.
    const QSize screen = QApplication::primaryScreen()->size();
    window.move(screen.width() - 100, screen.height() - 100);
    window.resize(501, 401);
    DoEvents();
    EXPECT_NEAR(window.x() + 501, screen.width() - Twips::ToPixels(Form::designedBorders), 1);
    EXPECT_NEAR(window.y() + 401, screen.height() - Twips::ToPixels(875), 1) << "with the title, 500 twips higher";
    window.move(-30, -20);
    window.resize(500, 400);
    DoEvents();
    EXPECT_EQ(window.pos(), QPoint());
    window.close();
    for (const char* value : {"1e99", "-1e99", "x", ""}) {
        for (const char* key : {"1", "2", "3", "4"})
            settings.SaveSetting("PictureView", key, value);
        ChooseMenu("mnuSizeableViewer");
        EXPECT_TRUE(QRect(QPoint(), screen).intersects(window.geometry())) << value;
        EXPECT_EQ(screen.expandedTo(window.size()), screen) << value;
        ChooseMenu("mnuSizeableViewer");
    }
}
