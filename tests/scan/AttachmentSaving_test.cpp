#include "demo/sample/Encoders.h"
#include "tests/shell/ProgramTest.h"

#include <QLabel>

#include <filesystem>

using testing::Contains;
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
    const std::vector<Row> rows = {
        {{Kite("red")}, {"alt.kites/kite.jpg: red"}},
        {{Kite("red")}, {"kite.jpg: red"}, nullptr, false},
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
            2},
    };
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
        EXPECT_THAT(captions,
            Contains(testing::StartsWith("Finished decoding 2 of " + std::to_string(row.bodies.size() + 1) + " -- ")));
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
    EXPECT_THAT(FilesBelow(folder.Path()), testing::Not(Contains(testing::StartsWith("kite"))));
}

TEST_F(AttachmentSavingTest, GroupsThatGetNoDirectory)
{
    const std::vector<std::string> names = {".ssh", "alt..kites", "alt.kites.", "-rf", "alt.\xe2\x80\xaekites",
        "alt/kites", std::string(300, 'x'), "alt.gr\xfcn\x9d"};
    SampleGroups groups;
    std::vector<std::string> stored;
    for (const std::string& name : names) {
        groups.push_back(GroupOf(name, 1, {Uuencode("red", std::to_string(groups.size()) + ".jpg")}));
        stored.push_back(std::to_string(groups.size() - 1) + ".jpg: red");
    }
    stored.back().insert(0, names.back() + "/"); // which is none of them
    SampleServer server(groups);
    Start(names, server.Port());
    Search();
    EXPECT_THAT(Stored(), testing::UnorderedElementsAreArray(stored));
}

// Whatever a group is called: what lies there decides what the program does and shows.
TEST_F(AttachmentSavingTest, TheProgramsOwnDirectoriesAreNoGroups)
{
    places.resources = ProgramFile("");
    MakeFile(ProgramFile("help/find-a-server.html"), "help");
    MakeFile(ProgramFile("debug.log"), "log");
    SampleServer server({GroupOf("program", 1, {Uuencode("red", "debug.log")}),
        GroupOf("help", 1,
            {Uuencode("red", "find-a-server.html"), Uuencode("red", "debug.log"), Uuencode("red", "TAMARACK.HLP"),
                Uuencode("red", "@!!#.another.server")})});
    for (const auto& [group, place] : {std::pair("program", folder.Path()), {"help", ProgramFile("")}}) {
        SCOPED_TRACE(group);
        settings.SaveSetting("Startup", "1", place);
        Start({group}, server.Port());
        Search();
        EXPECT_EQ(ContentOf(ProgramFile("help/find-a-server.html")), "help");
        EXPECT_EQ(ContentOf(ProgramFile("debug.log")), "log");
    }
    EXPECT_EQ(ContentOf(folder.File("debug.log")), "red");
    EXPECT_EQ(ContentOf(ProgramFile("find-a-server.html")), "red");
    EXPECT_EQ(ContentOf(ProgramFile("debug (2).log")), "red");
    // Nor does a download take the place of a file that the program does not have yet.
    EXPECT_EQ(ContentOf(ProgramFile("_TAMARACK.HLP")), "red");
    EXPECT_EQ(ContentOf(ProgramFile("_@!!#.another.server")), "red");
}

TEST_F(AttachmentSavingTest, DestinationIsReadForEachArticle)
{
    SampleServer server({GroupOf("alt.kites", 1, {Kite("red"), Kite("blue"), Kite("lost"), Kite("green")})});
    Start({"alt.kites"}, server.Port());
    Check("chkGroupSubDir", false);
    std::filesystem::create_directory(destination + "new");
    const auto goTo = [this](const std::string& directory) {
        return [this, directory] { program->MainWindow().txtSelectDir.SetText(destination + directory); };
    };
    // Once it is settled where the body goes, the attachment goes there too.
    atCaption["Decoding 3 of 5 -- alt.kites"] = goTo("new/");
    atCaption["Scanning 4 of 5 -- alt.kites"] = goTo("gone/");
    atCaption["Scanning 5 of 5 -- alt.kites"] = goTo("new/");
    Search();
    EXPECT_THAT(Stored(), ElementsAre("kite (2).jpg: blue", "kite.jpg: red", "new/kite.jpg: green"));
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 3");
}

TEST_F(AttachmentSavingTest, Limits)
{
    struct Row {
        const char* ofGroup; // no limit if it is null
        const char* ofRun;
        std::vector<std::string> stored;
        const char* items; // not brought up to date by the attachment that reaches the limit of the group
        bool connectionStays;
    };
    const std::vector<std::string> all = {"a/1", "a/2", "a/3", "b/4", "b/5", "b/6"};
    const std::vector<Row> rows = {
        {nullptr, nullptr, all, "Items: 6", true},
        {"2", nullptr, {"a/1", "a/2", "b/4", "b/5"}, "Items: 3", true},
        {nullptr, "4", {"a/1", "a/2", "a/3", "b/4"}, "Items: 4", false},
        {"2", "2", {"a/1", "a/2", "b/4"}, "Items: 3", false}, // both at once: that of the group counts first
        {"1", "2", {"a/1", "b/4"}, "Items: 0", true},
        {"3.5", "5 or so", {"a/1", "a/2", "a/3", "b/4", "b/5"}, "Items: 5", false},
    };
    const auto picture = [](const char* name) { return Uuencode("x", name); };
    SampleServer server({GroupOf("a", 1, {picture("1"), picture("2"), picture("3")}),
        GroupOf("b", 1, {picture("4"), picture("5"), picture("6")})});
    Start({"a", "b"}, server.Port());
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.stored) + row.items);
        Forget();
        server.ClearLog();
        desktop.sleeps.clear();
        for (const auto& [box, field, limit] : {std::tuple("chkLimitPictures", "txtLimitPictures", row.ofGroup),
                 std::tuple("chkMaximumFiles", "txtMaxToDownload", row.ofRun)}) {
            Check(box, true);
            TypeInto(field, limit ? limit : "");
            Check(box, limit != nullptr);
        }
        Search();
        EXPECT_EQ(FilesBelow(destination), row.stored);
        EXPECT_EQ(PanelText("StatusBar1", 2), row.items);
        EXPECT_EQ(server.CommandCount("body"), row.stored.size());
        EXPECT_EQ(desktop.sleeps.size(), row.connectionStays ? 2U : row.stored.back()[0] == 'a' ? 0U : 1U);
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
    const auto toolTip = [] { return Find<QLabel>("StatusBar1.Panels(2)").toolTip().toStdString(); };
    const auto expect = [&](const std::string& caption, const char* items, const char* waiting) {
        atCaption[caption] = [=] {
            EXPECT_EQ(PanelText("StatusBar1", 2), items) << caption;
            EXPECT_EQ(toolTip(), waiting) << caption;
        };
    };
    SampleServer server({GroupOf("alt.boats", 1, {parts[3], boat[0] + parts[0], parts[3], Kite("red")})});
    Start({"alt.boats", "alt.kites"}, server.Port());
    EXPECT_EQ(toolTip(), "Total items found");
    expect("Finished decoding 2 of 5 -- alt.boats", "Items: 0", "1 attachment is waiting for 3 more of 4 articles");
    expect("Finished decoding 4 of 5 -- alt.boats", "Items: 0", "2 attachments are waiting for 3 more of 6 articles");
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1");

    server.SetGroups({GroupOf("alt.kites", 1, {parts[1], parts[2] + boat[1], parts[2]})});
    MakeFile(PointerFile(), "");
    Start({"alt.kites"}, server.Port());
    EXPECT_EQ(toolTip(), "2 attachments are waiting for 3 more of 6 articles");
    Search();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 1");
    EXPECT_EQ(toolTip(), "1 attachment is waiting for 3 more of 4 articles")
        << "a part behind the last one begins anew";
    program->MainWindow().txtSelectDir.SetText(destination + "alt.kites/");
    Search();
    EXPECT_EQ(toolTip(), "Total items found");
    std::filesystem::remove_all(destination + ".tamarack-parts");
    EXPECT_THAT(Stored(),
        testing::UnorderedElementsAre(
            "alt.boats/kite.jpg: red", "alt.kites/boat.jpg: boat", "alt.kites/kite.jpg: " + kite));
}
