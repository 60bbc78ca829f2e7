#include "tests/shell/ProgramTest.h"

namespace {

using ArticleMatchingTest = ProgramTest;

const std::string single = "Subject: kite.jpg (1/1)";

}

// Which heads are followed by a body command.
TEST_F(ArticleMatchingTest, Heads)
{
    struct Row {
        const char* what;
        const char* mode;
        bool jpeg; // "JPEG Files" is checked
        const char* named;
        std::string head;
        bool wanted;
        const char* sizeIs = "";
        const char* limit = "10";
    };
    const bool jpeg = true;
    const bool none = false;
    const char* const parts = "chkSingleParts";
    const char* const criteria = "chkAllCriteria";
    const auto lines = [](const std::string& count) { return single + "\r\nlInEs:" + count; };
    const std::vector<Row> rows = {
        {"1/1", parts, jpeg, "", single, true},
        {"01/01", parts, jpeg, "", "Subject: kite.jpg (01/01)", true},
        {"11/12 has 1/1", parts, jpeg, "", "Subject: kite.jpg (11/12)", true},
        {"2/12", parts, jpeg, "", "Subject: kite.jpg (2/12)", false},
        {"2/12, and a version", parts, jpeg, "", "Subject: kite.jpg (2/12)\r\nX-Newsreader: 2.1/1", true},
        {"parts do not matter", criteria, jpeg, "", "Subject: kite.jpg (2/12)", true},
        {"case of a name", criteria, jpeg, "", "From: a.JpGer", true},
        {"four letters", criteria, jpeg, "", "Subject: kite.jpeg", false},
        {"no patterns", criteria, none, "", single, false},
        {"no patterns, everything", "chkAllArticles", none, "", "Subject: no", true},
        {"one that is off", criteria, jpeg, "", "Subject: a.gif", false},
        {"named alone", criteria, none, "cat; Dog ", "Subject: hotDOGs", true},
        {"named besides", criteria, jpeg, "cat;dog", "Subject: cat", true},
        {"no wildcards", criteria, none, "*.jpg", single, false},
        {"an empty entry in the middle", criteria, none, "cat;;dog", "Subject: no", true},
        {"an empty first entry", criteria, none, ";cat", "Subject: no", true},
        {"blanks only", criteria, jpeg, " ", "Subject: no", true},
        {"a semicolon at the end", criteria, jpeg, "cat;", "Subject: no", false},
        {"at most, equal", parts, jpeg, "", lines(" 3000"), true, "At Most", "3000"},
        {"at most, more", parts, jpeg, "", lines(" 3000"), false, "At Most", "2999"},
        {"at least, equal", parts, jpeg, "", lines("3000 or so"), true, "At Least", "3000"},
        {"at least, less", parts, jpeg, "", lines("3000"), false, "At Least", "3001"},
        {"beyond 32 bits", parts, jpeg, "", lines("9999999999"), true, "At Most", "2147483647"},
        {"a whole number", parts, jpeg, "", lines("29.7"), true, "At Least", "30"},
        {"ten characters", parts, jpeg, "", lines("      300000"), true, "At Most", "3000"},
        {"nothing wanted", parts, jpeg, "", lines("3000"), true, "", "1"},
        {"no limit, at most", parts, jpeg, "", lines("1"), false, "At Most", ""},
        {"no limit, at least", parts, jpeg, "", lines("many"), true, "At Least", ""},
        {"the field's number", parts, jpeg, "", lines("25"), true, "At Most", "25 lines"},
        {"no count", parts, jpeg, "", single, true, "At Least", "10"},
        {"X-Lines", parts, jpeg, "", single + "\r\nX-Lines: 5", true, "At Least", "10"},
        {"the first counts", parts, jpeg, "", lines("5") + "\r\nLines: 50", false, "At Least", "10"},
        {"in the first line", parts, jpeg, "", "Lines: 5\r\n" + single, true, "At Least", "10"},
        {"size before name", criteria, none, "", lines("5"), false, "At Most", "10"},
    };
    SampleServer server({});
    Start({"alt.kites"}, server.Port());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // A search loses the first header line of its first head.
        server.SetGroups(
            {{"alt.kites", {{1, "", ""}, {2, "Path: lost 1/1 .jpg\r\n" + row.head + "\r\n", "text\r\n"}}}});
        server.ClearLog();
        Forget();
        Check("chkJPEGFiles", row.jpeg);
        Check(row.mode, true);
        TypeInto("txtNamed", row.named);
        ChooseEntry("cboSizeIs", row.sizeIs);
        TypeInto("txtKB", row.limit);
        Search();
        EXPECT_EQ(server.CommandCount("body"), row.wanted ? 1U : 0U);
        EXPECT_EQ(server.CommandCount("head"), row.mode == std::string("chkAllArticles") ? 0U : 1U);
    }
}

TEST_F(ArticleMatchingTest, AChangeCountsFromTheNextArticleOn)
{
    SampleServer server({GroupOf("alt.kites", 1, {"a\r\n", "b\r\n", "c\r\n", "d\r\n"})});
    Start({"alt.kites"}, server.Port());
    atCaption["Scanning 3 of 5 -- alt.kites"] = [] { TypeInto("txtNamed", "kite"), Check("chkJPEGFiles", false); };
    atCaption["Scanning 4 of 5 -- alt.kites"] = [] { TypeInto("txtNamed", "boat"); };
    atCaption["Scanning 5 of 5 -- alt.kites"] = [] { Check("chkAllArticles", true); };
    Search();
    EXPECT_THAT(captions, testing::Contains("Getting 3 of 5 -- alt.kites"));
    EXPECT_THAT(captions, testing::Not(testing::Contains("Getting 4 of 5 -- alt.kites")));
    EXPECT_THAT(captions, testing::Contains("Getting 5 of 5 -- alt.kites"));
}
