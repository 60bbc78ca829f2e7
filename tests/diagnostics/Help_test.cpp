#include "tests/shell/ProgramTest.h"

#include <QLabel>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeView>
#include <filesystem>
#include <utility>

using testing::EndsWith;
using testing::HasSubstr;

namespace {

class HelpTest : public ProgramTest {
protected:
    // Gives a control the focus and presses F1; the label of the help then tells the topic.
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
        const std::string label = TextOf("frmHelp/lblTopic");
        return label.substr(label.find("Tamarack.hlp"));
    }

    // What F1 shows wherever the focus is in a window, and "" if the help stays away.
    static std::string TopicIn(const char* window)
    {
        QWidget& shown = *WindowNamed(window);
        QTest::keyClick(shown.focusWidget() != nullptr ? shown.focusWidget() : &shown, Qt::Key_F1);
        if (!IsVisible("frmHelp"))
            return {};
        const std::string label = TextOf("frmHelp/lblTopic");
        return Page() + label.substr(label.find("Tamarack.hlp") + 12);
    }

    // Through the window system, which withholds a click from a window that a modal one blocks.
    static void ClickInWindow(const char* control)
    {
        const QWidget& widget = Find<QWidget>(control);
        const QWidget& window = *widget.window();
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, widget.mapTo(&window, widget.rect().center()));
    }

    static std::string Page() { return Find<QTextBrowser>("page").documentTitle().toStdString(); }
};

}

TEST_F(HelpTest, EachControlHasItsTopic)
{
    Start();
    ChooseMenu("mnuHelpTopics");
    EXPECT_TRUE(IsVisible("frmHelp"));
    EXPECT_EQ(Page(), "What Tamarack does");
    struct Row {
        const char* topic;
        std::vector<const char*> controls;
        const char* page;
    };
    const char* const groups = "News Groups";
    for (const Row& row : {Row{"140", {"txtNamed"}, "Name & Location"}, Row{"150", {"chkGIFFiles"}, "Name & Location"},
             Row{"160", {"cmdSelectDir"}, "Name & Location"}, Row{"260", {"cboNewsServer"}, "Server Setup"},
             Row{"270", {"txtPort"}, "Server Setup"}, Row{"280", {"chkUserName"}, "Server Setup"},
             Row{"290", {"txtUserName"}, "Server Setup"}, Row{"300", {"txtPassword"}, "Server Setup"},
             Row{"330", {"cmdRefresh", "cmdRefreshDisk"}, groups}, Row{"340", {"lstAllGroups"}, groups},
             Row{"380", {"lstFilteredGroups"}, groups}, Row{"400", {"lstSelectedGroups"}, groups},
             Row{"430", {"Command1"}, "Find Now, Stop Action, Exit"},
             Row{"440", {"cmdFindNow"}, "Find Now, Stop Action, Exit"},
             Row{"500", {"cboSizeIs", "txtKB", "SpinButton1"}, "Advanced Filtering"},
             Row{"510", {"chkLimitPictures", "txtLimitPictures", "udLimitPictures"}, "Advanced Filtering"},
             Row{"520", {"chkMaximumFiles", "txtMaxToDownload", "udMaxToDownload"}, "Advanced Filtering"},
             Row{"540", {"cmdDeleteServer"}, "Server Setup"}, Row{"550", {"cmdAddNewsServer"}, "Server Setup"},
             Row{"560", {"txtManual", "txtNewsGroups"}, groups}, Row{"570", {"cmdAndFilter"}, groups},
             Row{"580", {"cmdOrFilter"}, groups}, Row{"590", {"cmdSavePicks"}, groups},
             Row{"600", {"Command3", "cmdClearAll", "MyUpDown(0)", "MyUpDown(3)"}, groups},
             Row{"610", {"Command4", "cmdResetGroup", "cmdClearSelected"}, groups}}) {
        for (const char* control : row.controls) {
            EXPECT_EQ(TopicOf(control), std::string("Tamarack.hlp  ") + row.topic) << control;
            EXPECT_EQ(Page(), row.page) << control;
        }
    }
    EXPECT_EQ(TopicOf("cmdStop"), "Tamarack.hlp");
    EXPECT_EQ(Page(), "What Tamarack does");

    ChooseMenu("mnuSlideShow");
    ChooseMenu("mnuTips");
    EXPECT_THAT(TextOf("frmHelp/lblTopic"), EndsWith("Tamarack.hlp  1180"));
    EXPECT_EQ(Page(), "The slide show");
    EXPECT_EQ(TopicIn("frmSlideShow"), "The slide show  1070");
    Click("cmdBack");
    EXPECT_EQ(Page(), "The slide show");
    Click("cmdBack");
    EXPECT_EQ(Page(), "What Tamarack does");
    EXPECT_THAT(TextOf("frmHelp/lblTopic"), EndsWith("Tamarack.hlp"));
    TypeInto("txtSearch", "RETENTION");
    Click("cmdSearch");
    EXPECT_THAT(RowsOf("lstFound"), testing::ElementsAre("How to find a news server"));
    TypeInto("txtSearch", "Backspace"); // not searched for yet
    ClickRow("lstFound", 0);
    EXPECT_EQ(Page(), "How to find a news server");
    // The table of contents marks the page, by whatever way it came.
    const auto& contents = Find<QTreeView>("contents");
    EXPECT_TRUE(Until([&] { return contents.currentIndex().data().toString() == "How to find a news server"; }));
    Click("cmdBack");
    EXPECT_EQ(contents.currentIndex().data().toString(), "Tamarack");
    const QModelIndex strip = contents.model()->index(7, 0, contents.currentIndex());
    QTest::mouseClick(contents.viewport(), Qt::LeftButton, {}, contents.visualRect(strip).center());
    EXPECT_EQ(Page(), "The preview strip");
    EXPECT_EQ(contents.currentIndex().data().toString(), "The preview strip");
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
    EXPECT_EQ(Page(), "What Tamarack does");
}

// Where a control has no topic of its own.
TEST_F(HelpTest, EachPageAndWindowHasATopic)
{
    Start({"alt.kites"}, 119);
    for (const auto& [control, topic] : {std::pair{"chkGroupSubDir", "1010"}, {"chkAllArticles", "1020"},
             {"lblUserName", "1030"}, {"StatusBar2", "1040"}, {"lblNewsGroups", "1042"}, {"chkAutoLoad", "1043"}})
        EXPECT_EQ(TopicOf(control), std::string("Tamarack.hlp  ") + topic);
    ChooseMenu("mnuInteractiveDownload");
    EXPECT_EQ(TopicOf("cmdClear(1)"), "Tamarack.hlp  1050");
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
                    EXPECT_EQ(Page(), "What Tamarack does");
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
    for (const char* content : std::initializer_list<const char*>{"", "no help", nullptr}) {
        if (content != nullptr)
            MakeFile(helpFile, content);
        else
            std::filesystem::remove(helpFile);
        ContextIDs help(desktop);
        help.HelpInit(folder.File("resources"));
        desktop.boxes.clear();
        help.HelpContext(1180);
        help.HelpContents();
        ASSERT_EQ(desktop.boxes.size(), 2U);
        EXPECT_THAT(desktop.boxes[0].text, HasSubstr(helpFile));
    }
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
