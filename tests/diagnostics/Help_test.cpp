#include "tests/shell/ProgramTest.h"

#include <QLabel>
#include <QListView>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>

using testing::HasSubstr;

namespace {

class HelpTest : public ProgramTest {
protected:
    // Gives a control the focus and presses F1.
    static std::string TopicOf(QWidget& widget)
    {
        widget.setEnabled(true);
        widget.setFocus();
        QTest::keyClick(&widget, Qt::Key_F1);
        return Shown();
    }
    static std::string TopicIn(const char* window)
    {
        QWidget* const focused = WindowNamed(window)->focusWidget();
        return TopicOf(focused != nullptr ? *focused : *WindowNamed(window));
    }

    // The page's title and, as the label of the help tells it, the topic's number; "" if the help stays away.
    static std::string Shown()
    {
        if (!IsVisible("frmHelp"))
            return {};
        const std::string label = TextOf("frmHelp/lblTopic");
        return Find<QTextBrowser>("page").documentTitle().toStdString() + label.substr(label.find("Tamarack.hlp") + 12);
    }

    // Through the window system, which withholds a click from a window that a modal one blocks.
    static void ClickInWindow(const char* control)
    {
        const QWidget& widget = Find<QWidget>(control);
        const QWidget& window = *widget.window();
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, widget.mapTo(&window, widget.rect().center()));
    }
};

}

TEST_F(HelpTest, EachControlAndWindowHasItsTopic)
{
    Start();
    ChooseMenu("mnuInteractiveDownload");
    for (QWidget* const widget : WindowNamed("frmTamarack")->findChildren<QWidget*>()) {
        const int topic = widget->focusPolicy() == Qt::NoFocus ? 0 : widget->property("helpTopic").toInt();
        EXPECT_TRUE(topic == 0 || TopicOf(*widget).ends_with("  " + std::to_string(topic)))
            << widget->objectName().toStdString();
    }
    // Most have no topic of their own.
    for (const auto& [control, topic] :
        {std::pair{"txtNamed", "Name & Location  140"}, {"chkGroupSubDir", "Name & Location  1010"},
            {"lblUserName", "Server Setup  1030"}, {"lblNewsGroups", "News Groups  1042"},
            {"cmdClear(1)", "The preview strip  1050"}, {"cmdStop", "What Tamarack does"}})
        EXPECT_EQ(TopicOf(Find<QWidget>(control)), topic) << control;
    SelectTab("SSTMain", 1);
    EXPECT_EQ(TopicIn("frmTamarack"), "Advanced Filtering  1020") << "on the tabs themselves";
    ChooseMenu("mnuSizeableViewer");
    EXPECT_EQ(TopicIn("frmShowPicture"), "The sizeable viewer  1060");
    QTest::mouseClick(&Find<QWidget>("frmShowPicture/SSPanel1"), Qt::RightButton, Qt::ControlModifier);
    WindowNamed("frmDebug")->setFocus(); // as when the control with the focus is disabled
    EXPECT_EQ(TopicIn("frmDebug"), "Troubleshooting  1080");
}

TEST_F(HelpTest, PagesAreFoundAndGoneBackTo)
{
    Start();
    ChooseMenu("mnuHelpTopics");
    EXPECT_EQ(Shown(), "What Tamarack does");
    ChooseMenu("mnuSlideShow");
    EXPECT_EQ(TopicIn("frmSlideShow"), "The slide show  1070");
    ChooseMenu("mnuTips");
    EXPECT_EQ(Shown(), "The slide show  1180");
    TypeInto("txtSearch", "RETENTION");
    Click("cmdSearch");
    EXPECT_GT(Find<QWidget>("Pages").y(), Find<QWidget>("lstFound").geometry().bottom());
    TypeInto("txtSearch", "Backspace"); // not searched for yet
    ClickRow("lstFound", 0);
    EXPECT_EQ(RowsOf("lstFound").size(), 1U);
    // The contents mark the page, by whatever way it came.
    auto& contents = Find<QListView>("contents");
    for (const char* page : {"How to find a news server", "The slide show"}) {
        EXPECT_EQ(Shown(), page);
        EXPECT_EQ(contents.currentIndex().data().toString(), page);
        Click("cmdBack");
    }
    ClickRow("contents", 9);
    QTest::keyClick(&contents, Qt::Key_Down);
    QTest::keyClick(&contents, Qt::Key_Return);
    EXPECT_EQ(Shown(), "The sizeable viewer");
    EXPECT_EQ(TopicOf(Find<QWidget>("cmdRefresh")), "News Groups  330"); // far down
    EXPECT_GT(Find<QTextBrowser>("page").verticalScrollBar()->value(), 0);
    Click("frmHelp/cmdClose");
    ChooseMenu("mnuHelpTopics");
    EXPECT_FALSE(IsVisible("lstFound") || !TextOf("txtSearch").empty());
    Click("frmTamarack/Command1");
    EXPECT_FALSE(IsVisible("frmHelp"));
}

// The help can be used over a modal window, and closed, and that window goes on.
TEST_F(HelpTest, F1InModalWindows)
{
    Start();
    WhenUp("frmNewsServer", [&] {
        EXPECT_EQ(TopicIn("frmNewsServer"), "Server Setup  550");
        ClickInWindow("frmHelp/cmdContents");
        EXPECT_EQ(Shown(), "What Tamarack does");
        ClickInWindow("frmHelp/cmdClose");
        ClickInWindow("frmNewsServer/cmdCancel");
    });
    Click("cmdAddNewsServer");
    EXPECT_FALSE(IsVisible("frmNewsServer") || IsVisible("frmHelp"));
    WhenUp("frmAbout", [] {
        EXPECT_THAT(TextOf("frmAbout/Label1(2)"), testing::MatchesRegex("Version [0-9]+\\.[0-9]+"));
        EXPECT_FALSE(Find<QLabel>("frmAbout/Image1").pixmap(Qt::ReturnByValue).isNull());
        EXPECT_EQ(TopicIn("frmAbout"), "What Tamarack does");
        QTest::keyClick(&Find<QWidget>("frmAbout/Command1"), Qt::Key_Escape);
    });
    ChooseMenu("mnuAbout");
    EXPECT_FALSE(IsVisible("frmAbout"));
}

TEST_F(HelpTest, TroubleIsTold)
{
    Start();
    const std::string helpFile = folder.File("resources/Tamarack.hlp");
    const std::string picture = folder.File("wide.bmp");
    QImage(900, 1, QImage::Format_RGB32).save(QString::fromStdString(picture));
    // A page shows nothing from outside the file, wherever that lies.
    const std::string whole = "<!-- page only.html -->\n<html><title>Mended</title><a href=\"file://" + picture
        + "\">link</a><img src=\"file://" + picture + "\"></html>\n";
    ContextIDs help(desktop, folder.File("resources/"));
    help.HelpContents();
    for (const std::string& content : {std::string(), std::string("no help</html>\n"), whole.substr(0, 60)}) {
        MakeFile(helpFile, content);
        help.HelpContext(1180);
        EXPECT_THAT(desktop.boxes.back().text, HasSubstr(helpFile));
    }
    // The file is read anew by each opening.
    for (const char* title : {"Mended", "Changed"}) {
        std::string content = whole;
        MakeFile(helpFile, content.replace(content.find("Mended"), 6, title));
        help.HelpContext(1180);
        auto& page = Find<QTextBrowser>("page");
        EXPECT_LT(page.document()->idealWidth(), 900);
        QTest::keyClick(&page, Qt::Key_Tab);
        EXPECT_EQ(page.textCursor().selectedText(), "link");
        QTest::keyClick(&page, Qt::Key_Return);
        EXPECT_EQ(Shown(), title);
        Click("frmHelp/cmdClose");
    }
    EXPECT_EQ(desktop.boxes.size(), 4U);
}
