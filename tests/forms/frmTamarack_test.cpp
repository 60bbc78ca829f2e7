#include "demo/support/Screen.h"
#include "forms/Placing.h"
#include "forms/frmTamarack.h"
#include "platform/Events.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QTabWidget>
#include <QTest>

namespace {

class MainFormTest : public testing::Test {
protected:
    void Show()
    {
        form.SetHeight(frmTamarack::heightWithoutPreviews);
        form.SetVisible(true);
        DoEvents();
    }

    frmTamarack form;
};

}

TEST_F(MainFormTest, EveryControlHasItsCaptionAndState)
{
    struct Row {
        const char* name;
        const char* text;
        bool enabled = true;
        bool checked = false;
    };
    for (const Row& row :
        {Row{"cmdFindNow", "Find Now"}, Row{"cmdStop", "Stop Action"}, Row{"Command1", "Exit"},
            Row{"cmdSelectDir", "Select Destination Drive"},
            Row{"chkGroupSubDir", "Use group name as sub directory", true, true},
            Row{"chkJPEGFiles", "JPEG Files (*.jpg)", true, true}, Row{"chkGIFFiles", "GIF Files (*.gif)"},
            Row{"chkBitMapFiles", "Bit Map Files (*.bmp)"}, Row{"chkMPEGFiles", "MPEG Files (*.mpg)"},
            Row{"Label3", "Additional criteria (separated by semi-colons)"}, Row{"txtNamed", ""},
            Row{"lblSizeIs", "Total Lines:"}, Row{"cboSizeIs", ""}, Row{"txtKB", "10"},
            Row{"chkLimitPictures", "Limit the Number of Pictures to:"}, Row{"txtLimitPictures", "10", false},
            Row{"lblPerNewsGroup", "per News Group", false}, Row{"chkMaximumFiles", "Maximum Files to Download:"},
            Row{"txtMaxToDownload", "10", false},
            Row{"chkSingleParts", "Must be a single part message (header contains 01/01 or 1/1)", true, true},
            Row{"chkAllCriteria", "Download all attachments matching selection criteria"},
            Row{"chkAllArticles", "Download all attachments"}, Row{"lblKB", "KB"},
            Row{"lblUseThisServerToPerformTheQuery", "Use this News Server to perform the query:"},
            Row{"cboNewsServer", ""}, Row{"lblPort", "Port:"}, Row{"txtPort", "119"},
            Row{"cmdAddNewsServer", "Add News Server..."}, Row{"cmdDeleteServer", "Delete News Server"},
            Row{"chkUserName", "Username/Password Required for the News Server"},
            Row{"lblUserName", "User Name:", false}, Row{"txtUserName", "", false},
            Row{"lblPassword", "Password:", false}, Row{"txtPassword", "", false}, Row{"txtManual", ""},
            Row{"Command3", "Add Manually"}, Row{"cmdClearAll", "Clear All"}, Row{"cmdClearSelected", "Clear Selected"},
            Row{"cmdResetGroup", "Reset Group"}, Row{"Command4", "Set Pointer"}, Row{"lblNewsGroups", "Group Filters"},
            Row{"txtNewsGroups", ""}, Row{"cmdAndFilter", "Filter (AND)"}, Row{"cmdOrFilter", "Filter (OR)"},
            Row{"cmdSavePicks", "Save Picks", false}, Row{"Label1", "Rebuilding List...Please Wait"},
            Row{"cmdRefresh", "Refresh From Network"}, Row{"cmdRefreshDisk", "Refresh From Disk"},
            Row{"chkAutoLoad", "Auto-load from disk", true, true}, Row{"Command2(2)", "View"},
            Row{"cmdClear(1)", "Clear"}, Row{"cmdDelete(0)", "Delete"}, Row{"Label2(0)", "<filename>"}}) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(TextOf(row.name), row.text);
        EXPECT_EQ(IsEnabled(row.name), row.enabled);
        if (qobject_cast<QAbstractButton*>(ControlNamed(row.name))) {
            EXPECT_EQ(IsChecked(row.name), row.checked);
        }
    }
    EXPECT_EQ(Find<QLineEdit>("txtPort").maxLength(), 4);
    EXPECT_EQ(Find<QLineEdit>("txtUserName").maxLength(), 20);
    EXPECT_EQ(Find<QLineEdit>("txtPassword").maxLength(), 20);
    EXPECT_EQ(Find<QLineEdit>("txtPassword").echoMode(), QLineEdit::Password);
    EXPECT_TRUE(Find<QPlainTextEdit>("txtSelectDir").isReadOnly());
    EXPECT_EQ(Find<QGroupBox>("Frame2").title(), "Search Criteria");
    EXPECT_EQ(RowsOf("cboSizeIs"), (std::vector<std::string>{"", "At Least", "At Most"}));
    EXPECT_EQ(Find<QComboBox>("cboSizeIs").currentIndex(), -1);
    for (const char* name : {"lstSelectedGroups", "lstFilteredGroups"})
        EXPECT_EQ(Find<QListView>(name).selectionMode(), QAbstractItemView::ExtendedSelection) << name;
    for (const char* name : {"MyUpDown(0)", "MyUpDown(1)", "MyUpDown(2)", "MyUpDown(3)", "SpinButton1",
             "udLimitPictures", "udMaxToDownload", "Picture1", "Image1", "Image2(2)", "SSPanel1(2)"})
        EXPECT_NE(ControlNamed(name), nullptr) << name;
}

TEST_F(MainFormTest, TabsMenusAndStatusBars)
{
    Show();
    const auto captions = [](const char* name) {
        QStringList texts;
        for (int i = 0; i < Find<QTabWidget>(name).count(); ++i)
            texts << Find<QTabWidget>(name).tabText(i);
        return texts.join(u'|').toStdString();
    };
    EXPECT_EQ(captions("SSTMain"), "Name && Location|Advanced Filtering|Server Setup|News Groups");
    EXPECT_EQ(captions("SSTab1"), "Selected Groups|Filtered Groups|All Groups");
    EXPECT_EQ(CurrentTab("SSTMain"), 0);
    EXPECT_EQ(CurrentTab("SSTab1"), 0);
    struct Entry {
        const char* name;
        const char* text;
    };
    for (const Entry& entry : {Entry{"mnuFile", "&File"}, Entry{"mnuFindNow", "Find Now"}, Entry{"mnuClose", "Exit"},
             Entry{"mnuView", "&Viewer"}, Entry{"mnuInteractiveDownload", "Interactive Download"},
             Entry{"mnuSizeableViewer", "Sizeable Viewer"}, Entry{"mnuSlideShow", "Slide Show"},
             Entry{"mnuHelp", "&Help"}, Entry{"mnuHelpTopics", "Help Topics"}, Entry{"mnuAbout", "About"}})
        EXPECT_EQ(Find<QAction>(entry.name).text().toStdString(), entry.text);
    for (const char* separator : {"mnuDash1", "mnuDash3"})
        EXPECT_TRUE(Find<QAction>(separator).isSeparator());
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Disconnected");
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0");
    EXPECT_EQ(PanelText("StatusBar1", 3), "Tamarack");
    EXPECT_EQ(PanelText("StatusBar1", 4), "");
    EXPECT_NE(PanelText("StatusBar1", 5), "");
    EXPECT_EQ(Find<QLabel>("StatusBar1.Panels(4)").toolTip(), "Current Time");
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 0");
    EXPECT_EQ(Find<QLabel>("StatusBar2.Panels(1)").toolTip(), "Total number of active groups");
    EXPECT_FALSE(IsVisible("Frame3"));
    EXPECT_EQ(CaptionOf("frmTamarack"), frmTamarack::idleCaption);
}

// A number of which the last digit is cut through is another number.
TEST(MainFormPanels, HaveRoomForTheirLongestTexts)
{
    struct Row {
        const char* bar;
        int number;
        std::vector<std::string> texts;
    };
    const QFont ownFont = QApplication::font();
    QFont thirteenPixels = ownFont, twentyPoints = ownFont;
    thirteenPixels.setPixelSize(13);
    twentyPoints.setPointSize(20);
    for (const QFont& font : {ownFont, thirteenPixels, twentyPoints}) {
        for (const char* locale : {"C", "en_US", "de_DE", "el_GR", "hu_HU", "zh_TW"}) {
            SCOPED_TRACE(font.toString().toStdString() + " " + locale);
            QApplication::setFont(font);
            QLocale::setDefault(QLocale(QLatin1String(locale)));
            frmTamarack form;
            form.SetVisible(true);
            form.SSTMain.SetTab(3);
            form.StatusBar1.Panels(4).SetStyle(PanelStyle::Time);
            DoEvents();
            const std::string time = QLocale().toString(QTime(22, 48, 48), QLocale::ShortFormat).toStdString();
            const std::string date = QLocale().toString(QDate(2026, 12, 28), QLocale::ShortFormat).toStdString();
            for (const Row& panel :
                {Row{"StatusBar1", 1,
                     {"Status: Username Required", "Status: Password Required", "Status: Error Connecting",
                         "Status: Username Failed", "Status: Password Failed", "Status: Reply Too Long",
                         "Status: Disconnected", "Status: Resolving Host"}},
                    Row{"StatusBar1", 2, {"Items: 123456"}}, Row{"StatusBar1", 3, {"Tamarack"}},
                    Row{"StatusBar1", 4, {time}}, Row{"StatusBar1", 5, {date}}, Row{"StatusBar2", 1, {"Total: 32201"}},
                    Row{"StatusBar2", 2, {"Filtered: 128324"}}, Row{"StatusBar2", 3, {"Selected: 64318"}},
                    Row{"StatusBar2", 4, {"Filtering Groups", "Scanning Groups", "Filling List", "Packets: 12345"}}}) {
                const auto& label
                    = Find<QLabel>(std::string(panel.bar) + ".Panels(" + std::to_string(panel.number) + ")");
                const QRect bar = label.parentWidget()->rect();
                EXPECT_TRUE(bar.contains(label.geometry())) << label.objectName().toStdString();
                EXPECT_GE(4 * QFontInfo(label.font()).pixelSize(), 3 * QFontInfo(font).pixelSize());
                for (const std::string& text : panel.texts)
                    EXPECT_LE(label.fontMetrics().horizontalAdvance(QString::fromStdString(text)),
                        label.contentsRect().width() - label.indent())
                        << text;
            }
        }
    }
    QApplication::setFont(ownFont);
    QLocale::setDefault(QLocale::system());
}

TEST_F(MainFormTest, NothingIsCutOffOrOverlaps)
{
    Show();
    form.SetHeight(frmTamarack::heightWithPreviews);
    form.Frame3.SetVisible(true);
    form.Label1.SetVisible(false);
    // Out of sight by design, or a thin divider.
    const QSet<QString> elsewhere{"lblKB", "Picture1", "Image1", "Frame1", "Frame3"};
    const QSet<QString> textWanted{"Label3", "lblSizeIs", "lblPerNewsGroup", "lblPort", "lblUserName"};
    QWidget& window = *WindowNamed("frmTamarack");
    for (int tab = 0; tab < 4; ++tab) {
        SelectTab("SSTMain", tab);
        for (int inner = 0; inner < (tab == 3 ? 3 : 1); ++inner) {
            if (tab == 3)
                SelectTab("SSTab1", inner);
            for (const QWidget* widget : window.findChildren<QWidget*>()) {
                const QString name = widget->objectName();
                if (name.isEmpty() || name.startsWith("qt_") || name.contains("Panels(") || !widget->isVisible()
                    || elsewhere.contains(name))
                    continue;
                EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry())) << name.toStdString();
                if (qobject_cast<const QPushButton*>(widget) || textWanted.contains(name)) {
                    const QString text = QString::fromStdString(TextOf(name.toStdString()));
                    EXPECT_LE(widget->fontMetrics().size(0, text).width(), widget->width()) << name.toStdString();
                }
                for (const QObject* sibling : widget->parentWidget()->children()) {
                    const auto* other = qobject_cast<const QWidget*>(sibling);
                    const bool counts = other != nullptr && other != widget && other->isVisible()
                        && !other->objectName().isEmpty() && !other->objectName().startsWith("qt_")
                        && !elsewhere.contains(other->objectName());
                    EXPECT_FALSE(counts && other->geometry().intersects(widget->geometry()))
                        << name.toStdString() << " and " << sibling->objectName().toStdString();
                }
            }
        }
    }
}

// Tab goes round everything that takes input, and assistive tools have a name for each.
TEST_F(MainFormTest, TheKeyboardReachesEveryControl)
{
    Show();
    QWidget& window = *WindowNamed("frmTamarack");
    window.activateWindow();
    Check("chkAllCriteria", true);
    for (int tab = 0; tab < 6; ++tab) {
        SelectTab("SSTMain", std::min(tab, 3));
        if (tab >= 3)
            SelectTab("SSTab1", tab - 3);
        QSet<QWidget*> reached;
        window.setFocus();
        for (int press = 0; press < 30; ++press) {
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
            reached.insert(window.focusWidget());
        }
        // Of a group of options, the selected one; the arrow keys lead to the others.
        EXPECT_EQ(reached.contains(&Find<QWidget>("chkAllCriteria")), tab == 1);
        EXPECT_FALSE(reached.contains(&Find<QWidget>("chkSingleParts")));
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            const std::string name = widget->objectName().toStdString();
            const bool takesInput = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr
                && widget->isVisible() && widget->isEnabled() && !name.starts_with("qt_") && !name.empty();
            if (!takesInput)
                continue;
            EXPECT_TRUE(reached.contains(widget)) << name;
            const auto* button = qobject_cast<QAbstractButton*>(widget);
            EXPECT_FALSE(widget->accessibleName().isEmpty() && (button == nullptr || button->text().isEmpty())) << name;
        }
    }
}

TEST(Placing, FitKeepsTheAspectInsideTheArea)
{
    struct Row {
        const char* what;
        float aspect;
        std::int32_t width;
        std::int32_t height;
    };
    for (const Row& row : {Row{"wide", 2, 2070, 1035}, Row{"tall", 0.5F, 848, 1695}, Row{"square", 1, 1695, 1695},
             Row{"very wide", 10000, 2070, 0}, Row{"one pixel wide, very tall", 0.0001F, 0, 1695}}) {
        SCOPED_TRACE(row.what);
        const FittedSize size = Fit(row.aspect, 2070, 1695);
        EXPECT_EQ(size.width, row.width);
        EXPECT_EQ(size.height, row.height);
    }
    // The margin is taken off each side, and once more off the width of what is too high.
    const FittedSize size = Fit(1, 1770, 1605, 10);
    EXPECT_EQ(size.width, 1615);
    EXPECT_EQ(size.height, 1595);
    EXPECT_EQ(Fit(1e-6F, 2070, 1695).width, 0);
}
