#include "demo/sample/Encoders.h"
#include "tests/shell/ProgramTest.h"

#include <QLabel>

using testing::ElementsAre;

namespace {

class AttachmentSavingTest : public ProgramTest {
protected:
    // What lies in the destination, as in "alt.kites/kite.jpg: red".
    std::vector<std::string> Stored() const
    {
        std::vector<std::string> stored;
        for (const std::string& file : FilesBelow(destination))
            stored.push_back(file + ": " + ContentOf(destination + file));
        return stored;
    }

    std::string Kite(const std::string& content) { return Uuencode(content, "kite.jpg"); }
};

}

TEST_F(AttachmentSavingTest, WhereAttachmentsGo)
{
    struct Row {
        std::vector<std::string> bodies;
        std::vector<std::string> stored;
        const char* before = nullptr; // a file that lies there before
        bool subDirectory = true;
        int items = 1;
    };
    const auto named = [](const char* content) { return Uuencode(content, "alt.kites"); };
    const std::vector<Row> rows = {{{Kite("red")}, {"alt.kites/kite.jpg: red"}},
        {{Kite("red"), Kite("blue")}, {"alt.kites/kite.jpg: blue"}, nullptr, true, 2},
        {{Kite("red"), Kite("blue")}, {"kite (2).jpg: blue", "kite.jpg: red"}, nullptr, false, 2},
        {{Kite("red") + Uuencode("x", "boat.jpg")}, {"alt.kites/boat.jpg: x", "alt.kites/kite.jpg: red"}},
        {{"just text\r\n", Kite("red").substr(0, 30)}, {}, nullptr, true, 0},
        // What lies there: a file of that name, of the group's, the very attachment, and a body of another search.
        {{Kite("red")}, {"alt.kites/kite.jpg: red"}, "alt.kites/kite.jpg"},
        {{Kite("red")}, {"alt.kites: old", "kite.jpg: red"}, "alt.kites"},
        {{Kite("old")}, {"alt.kites/kite.jpg: old", "kite.jpg: old"}, "kite.jpg"},
        {{Kite("red")}, {"alt.kites/kite.jpg: red"}, "article2.uue"},
        {{named("red"), named("blue")}, {"alt.kites/alt (2).kites: blue", "alt.kites/alt.kites: red"}, nullptr, true,
            2}};
    SampleServer server({});
    Start({"alt.kites"}, server.Port());
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.stored));
        server.SetGroups({GroupOf("alt.kites", 1, row.bodies)});
        Forget();
        if (row.before)
            MakeFile(destination + row.before, "old");
        Check("chkGroupSubDir", row.subDirectory);
        Search();
        EXPECT_EQ(Stored(), row.stored);
        EXPECT_EQ(PanelText("StatusBar1", 2), "Items: " + std::to_string(row.items));
    }
}

TEST_F(AttachmentSavingTest, AllButTheFirstOfTheseGetNoDirectory)
{
    const std::vector<std::string> names = {"alt.gr\xfcn\x9d", ".ssh", "alt..kites", "alt.kites.", "-rf",
        "alt.\xe2\x80\xaekites", "alt/kites", std::string(300, 'x')};
    SampleGroups groups;
    for (const std::string& name : names)
        groups.push_back(GroupOf(name, 1, {Kite("red")}));
    SampleServer server(groups);
    Start(names, server.Port());
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 8");
    EXPECT_THAT(Stored(), ElementsAre(names[0] + "/kite.jpg: red", "kite.jpg: red"));
}

// Whatever a group is called, what lies there decides. Nor does a download take the name of a file of the program's.
TEST_F(AttachmentSavingTest, TheProgramsOwnDirectoriesAreNoGroups)
{
    places.resources = ProgramFile("");
    MakeFile(ProgramFile("help/find-a-server.html"), "help");
    settings.SaveSetting("Startup", "1", ProgramFile(""));
    SampleServer server({GroupOf("help", 1,
        {Uuencode("red", "find-a-server.html"), Uuencode("red", "TAMARACK.HLP"),
            Uuencode("red", "@!!#.another.server")})});
    Start({"help"}, server.Port());
    Search();
    EXPECT_EQ(ContentOf(ProgramFile("help/find-a-server.html")), "help");
    for (const char* name : {"find-a-server.html", "_TAMARACK.HLP", "_@!!#.another.server"})
        EXPECT_EQ(ContentOf(ProgramFile(name)), "red") << name;
}

TEST_F(AttachmentSavingTest, Limits)
{
    struct Row {
        const char *ofGroup, *ofRun; // no limit if it is null
        std::vector<std::string> stored;
        const char* items; // not brought up to date by the attachment that reaches the limit of the group
        bool connectionStays;
    };
    const std::vector<Row> rows = {{nullptr, nullptr, {"a/1", "a/2", "a/3", "b/4", "b/5", "b/6"}, "Items: 6", true},
        {"2", nullptr, {"a/1", "a/2", "b/4", "b/5"}, "Items: 3", true},
        {nullptr, "4", {"a/1", "a/2", "a/3", "b/4"}, "Items: 4", false},
        {"2", "2", {"a/1", "a/2", "b/4"}, "Items: 3", false}, // both at once: that of the group counts first
        {"3.5", "5 or so", {"a/1", "a/2", "a/3", "b/4", "b/5"}, "Items: 5", false}};
    const auto picture = [](const char* name) { return Uuencode("x", name); };
    SampleServer server({GroupOf("a", 1, {picture("1"), picture("2"), picture("3")}),
        GroupOf("b", 1, {picture("4"), picture("5"), picture("6")})});
    Start({"a", "b"}, server.Port());
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.stored) + row.items);
        Forget();
        for (const auto& [box, field, arrows, limit] :
            {std::tuple("chkLimitPictures", "txtLimitPictures", "udLimitPictures", row.ofGroup),
                std::tuple("chkMaximumFiles", "txtMaxToDownload", "udMaxToDownload", row.ofRun)}) {
            Check(box, true);
            TypeInto(field, limit ? limit : "");
            Check(box, limit != nullptr);
            EXPECT_TRUE(IsEnabled(field) == (limit != nullptr) && IsEnabled(arrows) == (limit != nullptr));
        }
        EXPECT_EQ(IsEnabled("lblPerNewsGroup"), row.ofGroup != nullptr);
        Search();
        EXPECT_EQ(FilesBelow(destination), row.stored);
        EXPECT_EQ(PanelText("StatusBar1", 2), row.items);
        const std::size_t connections = server.ConnectionCount();
        Search();
        EXPECT_EQ(server.ConnectionCount() - connections, row.connectionStays ? 0U : 1U);
    }
}

// Over two groups, two searches and two starts of the program. The attachment counts when it is whole, and once.
TEST_F(AttachmentSavingTest, PartsWaitForTheOthers)
{
    const std::string kite(5000, 'k');
    const std::vector<std::string> parts = YencodeParts(kite, "kite.jpg", 4);
    const std::vector<std::string> boat = YencodeParts("boat", "boat.jpg", 2);
    const auto shown = [] {
        return PanelText("StatusBar1", 2) + ", " + Find<QLabel>("StatusBar1.Panels(2)").toolTip().toStdString();
    };
    SampleServer server({GroupOf("alt.boats", 1, {parts[3], boat[0] + parts[0], parts[3], Kite("red")})});
    Start({"alt.boats", "alt.kites"}, server.Port());
    atCaption["Finished decoding 2 of 5 -- alt.boats"]
        = [&] { EXPECT_EQ(shown(), "Items: 0, 1 attachment is waiting for 3 more of 4 articles"); };
    Search();
    EXPECT_EQ(shown(), "Items: 1, 2 attachments are waiting for 3 more of 6 articles");

    server.SetGroups({GroupOf("alt.kites", 1, {parts[1], parts[2] + boat[1], parts[2]})});
    MakeFile(PointerFile(), "");
    Start({"alt.kites"}, server.Port());
    Search();
    EXPECT_EQ(shown(), "Items: 1, 1 attachment is waiting for 3 more of 4 articles") << "a part behind the last one";
    std::filesystem::remove_all(destination + ".tamarack-parts");
    EXPECT_THAT(
        Stored(), ElementsAre("alt.boats/kite.jpg: red", "alt.kites/boat.jpg: boat", "alt.kites/kite.jpg: " + kite));
}
