#include "platform/Desktop.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Process.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

TEST(DesktopTest, TellsWhetherSomethingOpensTheDocument)
{
    const QByteArray path = qgetenv("PATH");
    const TemporaryFolder folder;
    const std::string opener = folder.File("xdg-open");
    const std::string address = AddressOfFile(folder.File("a page.html"));
    qputenv("PATH", folder.Path().c_str());
    qputenv("ADDRESS", address.c_str());
    Desktop desktop;
    EXPECT_FALSE(desktop.ShellOpen(address)) << "no opener";
    for (const auto& [script, works] : {std::pair("exit 3", false), {"[ \"$1\" = \"$ADDRESS\" ]", true},
             {"exec /bin/sleep 1.5", true}, {"kill -SEGV $$", false}}) {
        MakeFile(opener, std::string("#!/bin/sh\n") + script + '\n');
        std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
        EXPECT_EQ(desktop.ShellOpen(address), works) << script;
    }
    qputenv("PATH", path);
    // What is kept for the program that stays goes with it.
    EXPECT_TRUE(Until([&] { return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD; }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(DesktopTest, ABoxGivesWhatTheUserAnswers)
{
    for (const auto& [buttons, key, answer] : {std::tuple(MessageButtons::Ok, Qt::Key_Escape, MessageAnswer::Ok),
             {MessageButtons::Ok, Qt::Key_Return, MessageAnswer::Ok},
             {MessageButtons::OkCancel, Qt::Key_Return, MessageAnswer::Ok},
             {MessageButtons::OkCancel, Qt::Key_Escape, MessageAnswer::Cancel},
             {MessageButtons::YesNo, Qt::Key_Return, MessageAnswer::Yes},
             {MessageButtons::YesNo, Qt::Key_Escape, MessageAnswer::No}}) {
        QTimer::singleShot(0, [pressed = key] {
            auto& box = dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget());
            EXPECT_EQ(box.windowTitle() + "|" + box.text(), QStringLiteral("t\uFFFD|a\n<b>b</b>\uFFFD"));
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.cursor().shape(), Qt::ArrowCursor);
            QTest::keyClick(&box, pressed);
        });
        EXPECT_EQ(Desktop().MsgBox("a\r\n<b>b</b>\u202E", "t\u202E", buttons), answer);
    }
}

// Each test program has an application, as the program has.
TEST(ProcessOfTheApplication, GivesNothingAwayAndTakesNothing)
{
    EXPECT_EQ(QCoreApplication::libraryPaths(), QStringList{QLibraryInfo::path(QLibraryInfo::PluginsPath)});
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 0);
    rlimit core{};
    ASSERT_EQ(getrlimit(RLIMIT_CORE, &core), 0);
    EXPECT_EQ(core.rlim_max, 0U);
    testing::internal::CaptureStderr();
    qWarning("profile \x1b]0;owned\a\x9b\r\xe2\x80\xae named so");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
        testing::AllOf(testing::HasSubstr("profile"), testing::EndsWith(" named so\n"),
            testing::Not(testing::ContainsRegex("[\x1b\a\r]|\xe2\x80\xae"))));

    const QByteArray home = qgetenv("HOME");
    for (const char* unset : {"", "elsewhere"}) {
        qputenv("HOME", unset);
        PrepareProcess();
        EXPECT_TRUE(qgetenv("HOME").startsWith('/')) << "this user is in no database";
    }
    qputenv("HOME", home);
}

TEST(Look, AnIconAndAnEdgeAroundTheListWithTheFocus)
{
    const QImage icon = QApplication::windowIcon().pixmap(128, 128).toImage();
    EXPECT_EQ(icon.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(icon.pixelColor(64, 64).alpha(), 255);
    QWidget window;
    QListView list(&window);
    window.show();
    for (const bool focused : {true, false}) {
        focused ? list.setFocus() : list.clearFocus();
        ASSERT_TRUE(Until([&] { return list.hasFocus() == focused; }));
        const QImage seen = list.grab().toImage();
        for (const QPoint& place : {QPoint(0, 30), QPoint(30, seen.height() - 1)})
            EXPECT_EQ(seen.pixelColor(place) == list.palette().color(QPalette::Highlight), focused);
        EXPECT_EQ(seen.pixelColor(30, 30), list.palette().color(QPalette::Base));
    }
    const QPalette own = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::black, Qt::black));
    EXPECT_GT(QPushButton("m").grab().toImage().pixelColor(0, 9).lightness(), 200) << "an edge on a black ground";
    EXPECT_GT(own.color(QPalette::PlaceholderText).alpha(), 160) << "a hint can be read";
    QApplication::setPalette(own);
}
