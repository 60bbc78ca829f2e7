#include "demo/support/Screen.h"
#include "forms/DirectoryWalk.h"
#include "forms/Placing.h"
#include "forms/frmTamarack.h"
#include "platform/Events.h"
#include "tests/support/TestDesktop.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
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
    EXPECT_FALSE(IsVisible("Frame3"));
    form.SetHeight(frmTamarack::heightWithPreviews);
    form.Frame3.SetVisible(true);
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

// A volume opens at its top, with the busy pointer up meanwhile, and one that has gone leads back to the first disk.
TEST_F(MainFormTest, AnotherVolumeOpensAtItsTop)
{
    Form window("frmWalk", "", {.clientWidth = 3000, .clientHeight = 3000});
    DriveList volumes{window, "Drive1", {0, 0, 3000, 300}};
    DirectoryList directories{window, "Dir1", {0, 300, 3000, 2700}};
    TestDesktop desktop;
    DirectoryWalk walk(form, desktop, volumes, directories);
    walk.Begin("/usr/share");
    EXPECT_EQ(directories.Path(), "/usr/share");
    Qt::CursorShape pointer = Qt::ArrowCursor;
    QMetaObject::invokeMethod(
        qApp, [&] { pointer = WindowNamed("frmTamarack")->cursor().shape(); }, Qt::QueuedConnection);
    volumes.Click();
    EXPECT_EQ(directories.Path(), volumes.Text());
    EXPECT_EQ(pointer, Qt::WaitCursor);
    EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);

    walk.Begin("/usr/share");
    volumes.AddItem("/no such volume");
    EXPECT_TRUE(volumes.SelectText("/no such volume"));
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].text + "|" + desktop.boxes[0].title, "You need to put a disk in the drive|Error");
    EXPECT_EQ(directories.Path(), "/");
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
