#include "platform/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QLibraryInfo>
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
