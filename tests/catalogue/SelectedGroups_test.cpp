#include "tests/shell/ProgramTest.h"

#include <QTimer>

#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using SelectedGroupsTest = ProgramTest;

}

TEST_F(SelectedGroupsTest, FileAndList)
{
    struct Row {
        const char* what;
        const char* file;
        std::vector<std::string> rows;
        const char* written; // at the end of the program
    };
    for (const Row& row : {Row{"in its own order", "alt.kites\r\nalt.boats\r\nalt.kites\r\n",
                               {"alt.kites", "alt.boats", "alt.kites"}, "alt.kites\r\nalt.boats\r\nalt.kites\r\n"},
             Row{"bytes of another time", "alt.b\xFCro\r\n", {"alt.b\xC3\xBCro"}, "alt.b\xFCro\r\n"},
             Row{"fields", "  a  ,b\r\n\r\nlast", {"a  ", "b", "", "last"}, "a\r\nb\r\nlast\r\n"},
             Row{"quotation marks", "alt.a\r\n\"x\" y\r\n\"open\r\nx\"y\r\n", {"alt.a", "\"x\" y", "\"open", "x\"y"},
                 "alt.a\r\n\"x\" y\r\n\"open\r\nx\"y\r\n"},
             Row{"empty", "", {}, ""}}) {
        SCOPED_TRACE(row.what);
        MakeFile(SelectedFile(), row.file);
        Start();
        EXPECT_EQ(RowsOf("lstSelectedGroups"), row.rows);
        EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: " + std::to_string(row.rows.size()));
        EXPECT_EQ(ContentOf(SelectedFile()), row.file);
        Click("Command1");
        EXPECT_EQ(ContentOf(SelectedFile()), row.written);
    }
}

TEST_F(SelectedGroupsTest, OnlyTheServerInUseAtTheEndIsWritten)
{
    settings.SaveSetting("Servers", "localhost", "1");
    MakeFile(SelectedFile(), "  alt.kites\r\n");
    Start();
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), IsEmpty());
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1"); // there was no file to count
    Click("Command1");
    EXPECT_EQ(ContentOf(SelectedFile()), "  alt.kites\r\n");
    EXPECT_THAT(FilesBelow(ProgramFile("")), testing::Contains("#!@!.localhost"));
}

TEST_F(SelectedGroupsTest, WhatCannotBeReadIsKeptAndBelongsToItsServer)
{
    settings.SaveSetting("Servers", "localhost", "1");
    for (const char* what : {"directory", "link that leads nowhere", "pipe", "file that cannot be read on"}) {
        for (const bool leave : {false, true}) {
            SCOPED_TRACE(std::string(what) + (leave ? ", another server chosen" : ""));
            fs::remove_all(SelectedFile());
            fs::remove(SelectedFile("localhost"));
            if (what[0] == 'd')
                fs::create_directory(SelectedFile());
            else if (what[0] == 'p')
                ASSERT_EQ(mkfifo(SelectedFile().c_str(), 0600), 0);
            else
                fs::create_symlink(what[0] == 'l' ? "nowhere" : "/proc/self/mem", SelectedFile());
            const fs::file_type before = fs::symlink_status(SelectedFile()).type();
            Start();
            if (leave)
                ChooseEntry("cboNewsServer", "localhost");
            TypeInto("txtManual", "alt.boats");
            Click("Command3");
            Click("Command1");
            EXPECT_EQ(fs::symlink_status(SelectedFile()).type(), before);
            EXPECT_EQ(ContentOf(SelectedFile("localhost")), leave ? "alt.boats\r\n" : "");
            settings.SaveSetting("Servers", "Default", serverName);
        }
    }
}

TEST_F(SelectedGroupsTest, AServerChosenWhileTheGroupsOfAnotherCome)
{
    settings.SaveSetting("Servers", "localhost", "1");
    std::string many;
    for (int i = 0; i < 500; ++i)
        many += "alt.many\r\n";
    MakeFile(SelectedFile(), "alt.kites\r\n");
    MakeFile(ProgramFile("#!@!.localhost"), many);
    for (const bool andBack : {false, true}) {
        SCOPED_TRACE(andBack);
        Start();
        QTimer user;
        QObject::connect(&user, &QTimer::timeout, [&] {
            if (RowsOf("lstSelectedGroups").size() < 5)
                return;
            user.stop();
            ChooseEntry("cboNewsServer", serverName);
            if (andBack)
                ChooseEntry("cboNewsServer", "localhost");
        });
        user.start(0);
        ChooseEntry("cboNewsServer", "localhost");
        EXPECT_TRUE(Until([&] { return !user.isActive(); }));
        EXPECT_EQ(TextOf("cboNewsServer"), andBack ? "localhost" : serverName);
        const std::size_t count = andBack ? 500 : 1;
        EXPECT_EQ(RowsOf("lstSelectedGroups").size(), count);
        EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: " + std::to_string(count));
        Click("Command1");
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.kites\r\n");
        EXPECT_EQ(ContentOf(SelectedFile("localhost")), many);
    }
}
