#include "program-test/ProgramTest.h"

#include <QTimer>

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
             Row{"a quotation mark", "alt.a\r\nx\"y\r\nalt.b\r\n", {"alt.a", "x\"y", "alt.b"}, "alt.a\r\nalt.b\r\n"},
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

TEST_F(SelectedGroupsTest, AServerChosenWhileTheGroupsOfAnotherCome)
{
    settings.SaveSetting("Servers", "localhost", "1");
    std::string many;
    for (int i = 0; i < 500; ++i)
        many += "alt.many\r\n";
    MakeFile(SelectedFile(), "alt.kites\r\n");
    MakeFile(ProgramFile("#!@!.localhost"), many);
    Start();
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (RowsOf("lstSelectedGroups").size() < 5)
            return;
        user.stop();
        ChooseEntry("cboNewsServer", serverName);
    });
    user.start(0);
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_TRUE(Until([&] { return !user.isActive(); }));
    EXPECT_EQ(TextOf("cboNewsServer"), serverName);
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites"));
}
