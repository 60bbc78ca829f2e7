#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Desktop.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>

TEST(ShellOpen, TellsWhetherSomethingOpensTheDocument)
{
    const QByteArray path = qgetenv("PATH");
    const TemporaryFolder folder;
    const std::string opener = folder.File("xdg-open");
    const std::string address = AddressOfFile(folder.File("a page.html"));
    qputenv("PATH", folder.Path().c_str());
    struct Row {
        const char* what;
        const char* script;
        bool works;
    };
    Desktop desktop;
    for (const Row& row : {Row{"no opener", nullptr, false}, Row{"no program for it", "exit 3", false},
             Row{"it is handed on", "[ \"$1\" = \"$ADDRESS\" ]", true},
             Row{"the program stays", "exec /bin/sleep 1.5", true}, Row{"it crashes", "kill -SEGV $$", false}}) {
        SCOPED_TRACE(row.what);
        qputenv("ADDRESS", address.c_str());
        if (row.script != nullptr) {
            MakeFile(opener, std::string("#!/bin/sh\n") + row.script + '\n');
            std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
        }
        EXPECT_EQ(desktop.ShellOpen(address), row.works);
    }
    qputenv("PATH", path);
    // What is kept for the program that stays goes with it.
    EXPECT_TRUE(Until([] { return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD; }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(MsgBox, GivesWhatTheUserAnswers)
{
    struct Row {
        MessageButtons buttons;
        Qt::Key key;
        MessageAnswer answer;
    };
    for (const Row& row : {Row{MessageButtons::Ok, Qt::Key_Escape, MessageAnswer::Ok},
             Row{MessageButtons::Ok, Qt::Key_Return, MessageAnswer::Ok},
             Row{MessageButtons::OkCancel, Qt::Key_Return, MessageAnswer::Ok},
             Row{MessageButtons::OkCancel, Qt::Key_Escape, MessageAnswer::Cancel},
             Row{MessageButtons::YesNo, Qt::Key_Return, MessageAnswer::Yes},
             Row{MessageButtons::YesNo, Qt::Key_Escape, MessageAnswer::No}}) {
        QTimer::singleShot(0, [&] {
            auto& box = dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget());
            EXPECT_EQ(box.windowTitle() + "|" + box.text(), QStringLiteral("t\uFFFD|a\n<b>b</b>\uFFFD"));
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.cursor().shape(), Qt::ArrowCursor);
            QTest::keyClick(&box, row.key);
        });
        EXPECT_EQ(Desktop().MsgBox("a\r\n<b>b</b>\u202E", "t\u202E", row.buttons), row.answer);
    }
}

TEST(Sleep, ShowsWhatWasSetJustBefore)
{
    struct Window : QWidget {
        void paintEvent(QPaintEvent*) override { ++paints; }
        int paints = 0;
    } shown, hidden;
    shown.show();
    ASSERT_TRUE(Until([&] { return shown.paints > 0; }));
    const int before = shown.paints;
    Desktop().Sleep(std::chrono::milliseconds(1));
    EXPECT_EQ(shown.paints, before + 1);
    EXPECT_EQ(hidden.paints, 0);
}
