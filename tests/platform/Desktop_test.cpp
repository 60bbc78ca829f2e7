#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Desktop.h"

#include <QByteArray>
#include <QCoreApplication>

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
