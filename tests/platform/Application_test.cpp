#include "platform/Process.h"

#include "demo/support/Screen.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QListView>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

// Each test program has an application, as the program has.
TEST(ProcessOfTheApplication, GivesNothingAway)
{
    EXPECT_EQ(QCoreApplication::libraryPaths(), QStringList{QLibraryInfo::path(QLibraryInfo::PluginsPath)});
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 0);
    rlimit core{};
    ASSERT_EQ(getrlimit(RLIMIT_CORE, &core), 0);
    EXPECT_EQ(core.rlim_max, 0U);
}

TEST(ProcessOfTheApplication, TheToolkitsMessagesHoldNoControls)
{
    testing::internal::CaptureStderr();
    qWarning("profile \x1b]0;owned\a\x9b\r\xe2\x80\xae named so");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
        testing::AllOf(testing::HasSubstr("profile"), testing::EndsWith(" named so\n"),
            testing::Not(testing::ContainsRegex("[\x1b\a\r]|\xe2\x80\xae"))));
}

TEST(ProcessOfTheApplication, HasAHomeThatNobodyElseCanMake)
{
    const QByteArray home = qgetenv("HOME");
    const passwd* const user = getpwuid(geteuid());
    if (user == nullptr)
        GTEST_SKIP() << "The test of a missing HOME is passed over: this user is in no database.";
    for (const char* unset : {"", "elsewhere"}) {
        qputenv("HOME", unset);
        PrepareProcess();
        EXPECT_EQ(qgetenv("HOME"), user->pw_dir);
    }
    qputenv("HOME", home);
}

TEST(Look, AnIconInEverySizeAndAnEdgeAroundTheListWithTheFocus)
{
    for (const int side : {16, 32, 48, 64, 128}) {
        const QImage icon = QApplication::windowIcon().pixmap(side, side).toImage();
        EXPECT_EQ(icon.width(), side);
        EXPECT_EQ(icon.pixelColor(0, 0).alpha(), 0);
        EXPECT_EQ(icon.pixelColor(side / 2, side / 2).alpha(), 255);
    }
    QWidget window;
    QListView list(&window), other(&window);
    window.show();
    const auto isMarked = [&] {
        const QImage seen = list.grab().toImage();
        const QColor edge = list.palette().color(QPalette::Highlight);
        return seen.pixelColor(0, 30) == edge && seen.pixelColor(30, seen.height() - 1) == edge
            && seen.pixelColor(30, 30) != edge;
    };
    list.setFocus();
    ASSERT_TRUE(Until([&] { return list.hasFocus(); }));
    EXPECT_TRUE(isMarked());
    other.setFocus();
    EXPECT_FALSE(isMarked());
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed());
}
