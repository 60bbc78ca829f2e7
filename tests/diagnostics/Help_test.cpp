#include "tests/shell/ProgramTest.h"

#include <QImage>
#include <QLabel>
#include <QListView>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>

using testing::HasSubstr;

namespace {

class HelpTest : public ProgramTest {
protected:
    // Gives a control the focus and presses F1.
    static std::string TopicOf(const char* control)
    {
        QWidget& widget = Find<QWidget>(std::string("frmTamarack/") + control);
        for (QWidget* child = &widget; child->parentWidget(); child = child->parentWidget()) {
            for (QWidget* above = child->parentWidget(); above; above = above->parentWidget()) {
                if (auto* tabs = qobject_cast<QTabWidget*>(above); tabs && tabs->indexOf(child) >= 0)
                    tabs->setCurrentWidget(child);
            }
        }
        widget.setEnabled(true);
        widget.setFocus();
        QTest::keyClick(&widget, Qt::Key_F1);
        return Shown();
    }

    // What F1 shows wherever the focus is in a window.
    static std::string TopicIn(const char* window)
    {
        QWidget& shown = *WindowNamed(window);
        QTest::keyClick(shown.focusWidget() != nullptr ? shown.focusWidget() : &shown, Qt::Key_F1);
        return Shown();
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

TEST_F(HelpTest, EachControlHasItsTopic)
{
    Start();
    ChooseMenu("mnuHelpTopics");
    EXPECT_EQ(Shown(), "What Tamarack does");
    struct Row {
        const char* topic;
        std::vector<const char*> controls;
    };
    for (const Row& row : {Row{"Name & Location  140", {"txtNamed"}}, Row{"Name & Location  150", {"chkGIFFiles"}},
             Row{"Name & Location  160", {"cmdSelectDir"}}, Row{"Server Setup  260", {"cboNewsServer"}},
             Row{"Server Setup  270", {"txtPort"}}, Row{"Server Setup  280", {"chkUserName"}},
             Row{"Server Setup  290", {"txtUserName"}}, Row{"Server Setup  300", {"txtPassword"}},
             Row{"News Groups  330", {"cmdRefresh", "cmdRefreshDisk"}}, Row{"News Groups  340", {"lstAllGroups"}},
             Row{"News Groups  380", {"lstFilteredGroups"}}, Row{"News Groups  400", {"lstSelectedGroups"}},
             Row{"Find Now, Stop Action, Exit  430", {"Command1"}},
             Row{"Find Now, Stop Action, Exit  440", {"cmdFindNow"}},
             Row{"Advanced Filtering  500", {"cboSizeIs", "txtKB", "SpinButton1"}},
             Row{"Advanced Filtering  510", {"chkLimitPictures", "txtLimitPictures", "udLimitPictures"}},
             Row{"Advanced Filtering  520", {"chkMaximumFiles", "txtMaxToDownload", "udMaxToDownload"}},
             Row{"Server Setup  540", {"cmdDeleteServer"}}, Row{"Server Setup  550", {"cmdAddNewsServer"}},
             Row{"News Groups  560", {"txtManual", "txtNewsGroups"}}, Row{"News Groups  570", {"cmdAndFilter"}},
             Row{"News Groups  580", {"cmdOrFilter"}}, Row{"News Groups  590", {"cmdSavePicks"}},
             Row{"News Groups  600", {"Command3", "cmdClearAll", "MyUpDown(0)", "MyUpDown(3)"}},
             Row{"News Groups  610", {"Command4", "cmdResetGroup", "cmdClearSelected"}},
             // Where a control has no topic of its own.
             Row{"Name & Location  1010", {"chkGroupSubDir"}}, Row{"Advanced Filtering  1020", {"chkAllArticles"}},
             Row{"Server Setup  1030", {"lblUserName"}}, Row{"News Groups  1040", {"StatusBar2"}},
             Row{"News Groups  1042", {"lblNewsGroups"}}, Row{"News Groups  1043", {"chkAutoLoad"}},
             Row{"What Tamarack does", {"cmdStop"}}}) {
        for (const char* control : row.controls)
            EXPECT_EQ(TopicOf(control), row.topic) << control;
    }

    ChooseMenu("mnuSlideShow");
    ChooseMenu("mnuTips");
    EXPECT_EQ(Shown(), "The slide show  1180");
    EXPECT_EQ(TopicIn("frmSlideShow"), "The slide show  1070");
    Click("cmdBack");
    EXPECT_EQ(Shown(), "The slide show");
    Click("cmdBack");
    EXPECT_EQ(Shown(), "What Tamarack does");
    TypeInto("txtSearch", "RETENTION");
    Click("cmdSearch");
    EXPECT_THAT(RowsOf("lstFound"), testing::ElementsAre("How to find a news server"));
    TypeInto("txtSearch", "Backspace"); // not searched for yet
    ClickRow("lstFound", 0);
    EXPECT_EQ(Shown(), "How to find a news server");
    // The contents mark the page, by whatever way it came.
    auto& contents = Find<QListView>("contents");
    const auto marked = [&] { return contents.currentIndex().data().toString(); };
    EXPECT_EQ(marked(), "How to find a news server");
    Click("cmdBack");
    EXPECT_EQ(marked(), "What Tamarack does");
    ClickRow("contents", 8);
    EXPECT_EQ(Shown(), "The preview strip");
    EXPECT_EQ(marked(), "The preview strip");
    QTest::keyClick(&contents, Qt::Key_Down);
    QTest::keyClick(&contents, Qt::Key_Return);
    EXPECT_EQ(Shown(), "The sizeable viewer");
    EXPECT_EQ(RowsOf("lstFound").front(), "How to find a news server"); // there was no other search
    EXPECT_EQ(TopicOf("cmdRefresh"), "News Groups  330"); // far down
    EXPECT_GT(Find<QTextBrowser>("page").verticalScrollBar()->value(), 0);
    Click("frmTamarack/Command1");
    EXPECT_FALSE(IsVisible("frmHelp"));
}

// As when the system ends the program.
TEST_F(HelpTest, ItsWindowOutlivesAMessageBoxOverIt)
{
    Start();
    ChooseMenu("mnuHelpTopics");
    ASSERT_TRUE(Until([] { return QApplication::activeWindow() == WindowNamed("frmHelp"); }));
    QTimer::singleShot(0, [this] {
        QWidget* const box = QApplication::activeModalWidget();
        ASSERT_EQ(box->parentWidget(), WindowNamed("frmHelp"));
        program->End();
        EXPECT_FALSE(IsVisible("frmHelp"));
        ASSERT_EQ(QApplication::activeModalWidget(), box);
        box->close();
    });
    Desktop().MsgBox("The disk is full.", "Error");
    EXPECT_EQ(desktop.programEnds, 1);
    ChooseMenu("mnuHelpTopics");
    EXPECT_EQ(Shown(), "What Tamarack does");
}

TEST_F(HelpTest, EachPageAndWindowHasATopic)
{
    Start({"alt.kites"}, 119);
    ChooseMenu("mnuInteractiveDownload");
    EXPECT_EQ(TopicOf("cmdClear(1)"), "The preview strip  1050");
    // On the tabs themselves.
    const char* const tabTopics[] = {"Name & Location  1010", "Advanced Filtering  1020", "Server Setup  1030"};
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTMain", tab);
        EXPECT_EQ(TopicIn("frmTamarack"), tabTopics[tab]);
    }
    const char* const groupTopics[] = {"News Groups  1041", "News Groups  1042", "News Groups  1043"};
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTab1", tab);
        EXPECT_EQ(TopicIn("frmTamarack"), groupTopics[tab]);
    }
    ChooseMenu("mnuSizeableViewer");
    EXPECT_EQ(TopicIn("frmShowPicture"), "The sizeable viewer  1060");
    QTest::mouseClick(&Find<QWidget>("frmShowPicture/SSPanel1"), Qt::RightButton, Qt::ControlModifier);
    EXPECT_EQ(TopicIn("frmDebug"), "Troubleshooting  1080");
    WindowNamed("frmDebug")->setFocus(); // as when the control with the focus is disabled
    EXPECT_EQ(TopicIn("frmDebug"), "Troubleshooting  1080");
}

// The help can be used over a modal window, and closed, and that window goes on.
TEST_F(HelpTest, F1InModalWindows)
{
    Start({"alt.kites"}, 119);
    ClickRow("lstSelectedGroups", 0);
    struct Row {
        const char* window;
        const char* topic;
        const char* close;
        std::function<void()> open;
    };
    for (const bool openBefore : {false, true}) {
        for (const Row& row :
            {Row{"frmSelectDrive", "Name & Location  160", "cmdCancel", [] { Click("cmdSelectDir"); }},
                Row{"frmNewsServer", "Server Setup  550", "cmdCancel", [] { Click("cmdAddNewsServer"); }},
                Row{"frmSetPointer", "News Groups  610", "cmdOk(1)", [] { Click("Command4"); }},
                Row{"frmAbout", "What Tamarack does", "Command1", [] { ChooseMenu("mnuAbout"); }}}) {
            SCOPED_TRACE(row.window);
            if (openBefore)
                ChooseMenu("mnuHelpTopics");
            WhenUp(row.window, [&] {
                const std::string close = std::string(row.window) + '/' + row.close;
                EXPECT_EQ(TopicIn(row.window), row.topic);
                if (IsVisible("frmHelp")) {
                    ClickInWindow("frmHelp/cmdContents");
                    EXPECT_EQ(Shown(), "What Tamarack does");
                    // With the window gone the help stays; without, it goes alone.
                    if (!openBefore)
                        ClickInWindow("frmHelp/cmdClose");
                }
                EXPECT_EQ(IsVisible("frmHelp"), openBefore);
                ClickInWindow(close.c_str());
            });
            row.open();
            EXPECT_FALSE(IsVisible(row.window));
            EXPECT_EQ(IsVisible("frmHelp"), openBefore);
            if (openBefore)
                ClickInWindow("frmHelp/cmdClose");
        }
    }
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
    ContextIDs help(desktop);
    help.HelpInit(folder.File("resources"));
    for (const std::string& content : {std::string(), std::string("no help</html>\n"), whole.substr(0, 60)}) {
        MakeFile(helpFile, content);
        help.HelpContext(1180);
        std::filesystem::remove(helpFile);
        help.HelpContents();
    }
    ASSERT_EQ(desktop.boxes.size(), 6U);
    for (const auto& box : desktop.boxes)
        EXPECT_THAT(box.text, HasSubstr(helpFile));
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
    EXPECT_EQ(desktop.boxes.size(), 6U);
}

TEST_F(HelpTest, AboutTellsTheVersion)
{
    Start();
    WhenUp("frmAbout", [] {
        EXPECT_EQ(CaptionOf("frmAbout"), "About ");
        EXPECT_EQ(TextOf("frmAbout/Label1(2)"), "Version 2.7");
        EXPECT_EQ(TextOf("frmAbout/Label1(3)"), "The Tamarack");
        EXPECT_FALSE(Find<QLabel>("frmAbout/Image1").pixmap(Qt::ReturnByValue).isNull());
        QTest::keyClick(&Find<QWidget>("frmAbout/Command1"), Qt::Key_Escape);
    });
    ChooseMenu("mnuAbout");
    EXPECT_FALSE(IsVisible("frmAbout"));
}
