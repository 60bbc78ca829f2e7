#include "tests/shell/ProgramTest.h"

#include <filesystem>

namespace {

class PointerFileTest : public ProgramTest {
protected:
    // The commands of a search that place and move the reader, as in "stat 5, next, next".
    std::string SearchCommands(SampleServer& server)
    {
        server.ClearLog();
        Search();
        std::string commands;
        for (const SampleServer::Command& command : server.Log()) {
            if (command.name == "stat" || command.name == "next")
                commands += (commands.empty() ? "" : ", ") + command.name + (command.name == "stat" ? " " : "")
                    + command.argument;
        }
        return commands;
    }
};

}

TEST_F(PointerFileTest, WhereASearchBeginsAndWhatItWrites)
{
    struct Row {
        std::string before; // the pointer file
        std::vector<std::int32_t> articles;
        const char* commands;
        std::string after;
        std::string group = "alt.kites";
    };
    const auto kites = [](std::int32_t article) { return PointerRecord(article, "alt.kites"); };
    const std::string boats = PointerRecord(7, "alt.boats");
    const std::string cats = PointerRecord(-1, "alt.cats");
    const std::string longest = "alt." + std::string(76, 'x');
    const std::string other = PointerRecord(3, "Alt.Kites");
    const std::vector<Row> rows = {{"", {300, 301, 303}, "next, next, next", kites(303)},
        {boats + cats, {65535, 70000}, "next, next", boats + cats + kites(70000)},
        {boats + kites(3) + cats, {2, 3, 4}, "stat 3, next, next", boats + kites(4) + cats},
        {kites(3) + kites(4), {3, 5}, "stat 3, next, next", kites(5) + kites(4)},
        {PointerRecord(3, "  alt.kites"), {3, 4}, "stat 3, next, next", kites(4)},
        {other, {3, 4}, "next, next", other + kites(4)},
        {boats + cats.substr(0, 50), {1, 2}, "next, next", boats + kites(2)},
        // Of a name so many characters are kept.
        {PointerRecord(1, longest), {1, 2}, "stat 1, next, next", PointerRecord(2, longest), longest},
        {PointerRecord(1, longest), {1, 2}, "next, next", PointerRecord(1, longest) + PointerRecord(2, longest),
            longest + "y"}};
    SampleServer server({});
    std::string started; // the group that the program was started with
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before + " " + row.group);
        SampleGroup group{row.group, {}};
        for (const std::int32_t number : row.articles)
            group.articles.push_back({number, "Subject: no\r\n", "text\r\n"});
        server.SetGroups({group});
        if (started != row.group)
            Start({started = row.group}, server.Port());
        Forget(row.before);
        EXPECT_EQ(SearchCommands(server), row.commands);
        EXPECT_EQ(ContentOf(PointerFile()), row.after);
    }
}

TEST_F(PointerFileTest, APointerThatCannotBeWrittenStopsNothing)
{
    SampleServer server({GroupOf("alt.kites", 1, {"a\r\n", "b\r\n"})});
    Start({"alt.kites"}, server.Port());
    std::filesystem::create_directory(PointerFile());
    for (int search = 0; search < 2; ++search) {
        EXPECT_EQ(SearchCommands(server), "next, next, next");
        EXPECT_EQ(server.CommandCount("body"), 2U);
    }
}
