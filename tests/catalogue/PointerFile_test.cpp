#include "tests/shell/ProgramTest.h"

using PointerFileTest = ProgramTest;

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
    for (const Row& row : rows) {
        SampleGroup group{row.group, {}};
        for (const std::int32_t number : row.articles)
            group.articles.push_back({number, "Subject: no\r\n", "text\r\n"});
        server.SetGroups({group});
        Start({row.group}, server.Port());
        Forget(row.before);
        server.ClearLog();
        Search();
        std::string commands; // those that place and move the reader
        for (const auto& [name, argument] : server.Log())
            commands += name == "stat" ? "stat " + argument + ", " : name == "next" ? "next, " : "";
        EXPECT_EQ(commands, std::string(row.commands) + ", ") << row.before;
        EXPECT_EQ(ContentOf(PointerFile()), row.after);
    }
}
