#include "demo/support/Screen.h"
#include "forms/DirectoryWalk.h"
#include "forms/Placing.h"
#include "forms/frmTamarack.h"
#include "platform/Events.h"
#include "tests/support/TestDesktop.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSet>
#include <QTest>

// A number of which the last digit is cut through is another number.
TEST(MainForm, PanelsHaveRoomForTheirLongestTexts)
{
    const QFont ownFont = QApplication::font();
    for (const QFont& font : {ownFont, QFont(ownFont.family(), 20)}) {
        for (const char* locale : {"C", "en_US", "de_DE", "el_GR", "hu_HU", "zh_TW"}) {
            QApplication::setFont(font);
            QLocale::setDefault(QLocale(QLatin1String(locale)));
            frmTamarack form;
            form.SSTMain.SetTab(3);
            form.SetVisible(true);
            form.StatusBar1.Panels(4).SetStyle(PanelStyle::Time);
            form.StatusBar1.Panels(1).SetPadlock(std::string_view(locale) != "C");
            DoEvents();
            const QString time = QLocale().toString(QTime(22, 48, 48), QLocale::ShortFormat);
            const QString date = QLocale().toString(QDate(2026, 12, 28), QLocale::ShortFormat);
            for (const auto& [panel, text] : {std::pair("StatusBar1.Panels(1)", QString("Status: Username Required")),
                     {"StatusBar1.Panels(2)", "Items: 123456"}, {"StatusBar1.Panels(4)", time},
                     {"StatusBar1.Panels(5)", date}, {"StatusBar2.Panels(1)", "Total: 32201"},
                     {"StatusBar2.Panels(2)", "Filtered: 128324"}, {"StatusBar2.Panels(3)", "Selected: 64318"},
                     {"StatusBar2.Panels(4)", "Filtering Groups"}}) {
                const auto& label = Find<QLabel>(panel);
                EXPECT_TRUE(label.parentWidget()->rect().contains(label.geometry())) << panel;
                EXPECT_GE(4 * QFontInfo(label.font()).pixelSize(), 3 * QFontInfo(font).pixelSize());
                EXPECT_LE(label.fontMetrics().horizontalAdvance(text), label.contentsRect().width() - label.indent());
            }
        }
    }
    QApplication::setFont(ownFont);
    QLocale::setDefault(QLocale::system());
}

// Tab goes round everything that takes input, as it lies; each control tells what it is.
TEST(MainForm, EverythingFitsAndIsReachedByTheKeyboard)
{
    frmTamarack form;
    form.SetHeight(frmTamarack::heightWithPreviews);
    form.Frame3.SetVisible(true);
    form.SetVisible(true);
    QWidget& window = *WindowNamed("frmTamarack");
    window.activateWindow();
    Check("chkAllCriteria", true);
    // Out of sight by design, or a thin divider.
    const QSet<QString> elsewhere{"lblKB", "Picture1", "Image1", "Frame1", "Frame3", ""};
    // Whose captions say it all, so that they have no tool tip.
    const QSet<QString> plain{"Command3", "cmdAddNewsServer", "cmdDeleteServer", "Command2", "cmdClear"};
    const QSet<QString> textWanted{"Label3", "lblSizeIs", "lblPerNewsGroup", "lblPort", "lblUserName"};
    for (int page = 0; page < 6; ++page) {
        SCOPED_TRACE(page);
        SelectTab("SSTMain", std::min(page, 3));
        if (page >= 3)
            SelectTab("SSTab1", page - 3);
        QList<QWidget*> reached;
        window.setFocus();
        for (int press = 0; press < 40; ++press) {
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
            QWidget* const now = window.focusWidget();
            if (reached.contains(now))
                continue;
            const QWidget* before = reached.isEmpty() ? nullptr : reached.back();
            // From the end of a column to the next one.
            const bool besides = before != nullptr && now->parentWidget() == before->parentWidget()
                && before != &Find<QWidget>("MyUpDown(3)");
            constexpr int slack = 8;
            EXPECT_TRUE(!besides || now->y() > before->y() + slack
                || (now->y() >= before->y() - slack && now->x() > before->x()))
                << now->objectName().toStdString();
            reached << now;
        }
        // Of a group of options, the selected one; the arrow keys lead to the others.
        EXPECT_EQ(reached.contains(&Find<QWidget>("chkAllCriteria")), page == 1);
        EXPECT_FALSE(reached.contains(&Find<QWidget>("chkSingleParts")));
        QList<QWidget*> seen = window.findChildren<QWidget*>();
        seen.removeIf([&](QWidget* widget) {
            const QString name = widget->objectName();
            return !widget->isVisible() || name.startsWith("qt_") || name.contains("Panels(")
                || elsewhere.contains(name);
        });
        EXPECT_GT(seen.size(), 20);
        QSet<QString> names;
        for (QWidget* widget : seen) {
            const std::string name = widget->objectName().toStdString();
            EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry())) << name;
            if (qobject_cast<const QPushButton*>(widget) || textWanted.contains(widget->objectName())) {
                const QString text = QString::fromStdString(TextOf(name));
                EXPECT_LE(widget->fontMetrics().size(0, text).width(), widget->width()) << name;
            }
            for (const QWidget* other : seen) {
                const bool besides = other != widget && other->parentWidget() == widget->parentWidget();
                EXPECT_FALSE(besides && other->geometry().intersects(widget->geometry()))
                    << name << " and " << other->objectName().toStdString();
            }
            if (!(widget->focusPolicy() & Qt::TabFocus) || widget->focusProxy() != nullptr || !widget->isEnabled())
                continue;
            EXPECT_TRUE(reached.contains(widget)) << name;
            const bool isPlain = qobject_cast<const QLineEdit*>(widget) == nullptr
                && (qobject_cast<const QPushButton*>(widget) == nullptr
                    || plain.contains(widget->objectName().section(u'(', 0, 0)));
            EXPECT_TRUE(isPlain || !widget->toolTip().isEmpty()) << name;
            QString told = widget->accessibleName();
            if (const auto* button = qobject_cast<QAbstractButton*>(widget); button != nullptr && told.isEmpty())
                told = button->text();
            EXPECT_FALSE(told.isEmpty()) << name;
            told += widget->metaObject()->className();
            EXPECT_FALSE(names.contains(told)) << name;
            names << told;
        }
    }
}

// A volume opens at its top, with the busy pointer up meanwhile, and one that has gone leads back to the first disk.
TEST(DirectoryWalking, AnotherVolumeOpensAtItsTop)
{
    frmTamarack form;
    DriveList volumes{form, "Drive1", {0, 0, 3000, 300}};
    DirectoryList directories{form, "Dir1", {0, 300, 3000, 2700}};
    TestDesktop desktop;
    DirectoryWalk walk(form, desktop, volumes, directories);
    walk.Begin("/usr/share");
    EXPECT_EQ(directories.Path(), "/usr/share");
    volumes.Click();
    EXPECT_EQ(directories.Path(), volumes.Text());
    volumes.AddItem("/no such volume");
    const QWidget& window = *WindowNamed("frmTamarack");
    desktop.whileBoxIsUp = [&](const TestDesktop::Box& box) {
        EXPECT_EQ(box.text, "You need to put a disk in the drive");
        EXPECT_EQ(window.cursor().shape(), Qt::WaitCursor);
    };
    EXPECT_TRUE(volumes.SelectText("/no such volume"));
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(directories.Path() + volumes.Text() + std::to_string(desktop.boxes.size()), "//1");
    // Nor does the next beginning take its own change of the volume for the user's.
    auto& box = Find<QComboBox>("Drive1");
    box.blockSignals(true);
    (void)volumes.SelectText("/no such volume");
    box.blockSignals(false);
    walk.Begin("/usr/share");
    EXPECT_EQ(directories.Path() + volumes.Text(), "/usr/share/");
}

// The margin is taken off each side, and once more off the width of what is too high.
TEST(Placing, FitKeepsTheAspectInsideTheArea)
{
    for (const auto& [aspect, margin, width, height] : {std::tuple(2.F, 0, 2070, 1035), {0.5F, 0, 848, 1695},
             {10000, 0, 2070, 0}, {0.0001F, 0, 0, 1695}, {1e-6F, 0, 0, 1695}, {1, 10, 1705, 1685}}) {
        const FittedSize size = Fit(aspect, 2070, 1695, margin);
        EXPECT_EQ(std::pair(size.width, size.height), std::pair(width, height)) << aspect;
    }
}
