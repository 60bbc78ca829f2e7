#include "tests/shell/ProgramTest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

using SearchCriteriaTest = ProgramTest;

const std::string single = "Subject: kite.jpg (1/1)";

}

TEST_F(SearchCriteriaTest, LimitsAreEnabledByTheirCheckBoxes)
{
    Start();
    for (const auto& [box, controls] :
        std::map<std::string, std::vector<const char*>>{{"chkMaximumFiles", {"txtMaxToDownload", "udMaxToDownload"}},
            {"chkLimitPictures", {"txtLimitPictures", "udLimitPictures", "lblPerNewsGroup"}}}) {
        for (const bool wanted : {true, false}) {
            Check(box, wanted);
            for (const char* control : controls)
                EXPECT_EQ(IsEnabled(control), wanted) << control;
        }
    }
}

TEST_F(SearchCriteriaTest, WarningOfMultiPartMessages)
{
    settings.SaveSetting("Startup", "7", "False");
    settings.SaveSetting("Startup", "8", "True");
    Start();
    std::vector<std::size_t> warnings;
    for (const char* option : {"chkAllCriteria", "chkSingleParts", "chkAllArticles", "chkAllArticles"}) {
        Check(option, true);
        EXPECT_TRUE(IsChecked(option));
        warnings.push_back(desktop.boxes.size());
    }
    EXPECT_THAT(warnings, ElementsAre(1, 1, 2, 2));
    EXPECT_FALSE(IsChecked("chkAllCriteria"));
}

// Which heads are followed by a body command.
TEST_F(SearchCriteriaTest, Heads)
{
    struct Row {
        const char* what;
        const char* mode;
        std::string fileType; // the check box that is checked
        const char* named;
        std::string head;
        bool wanted;
        const char* sizeIs = "";
        const char* limit = "10";
    };
    const char* const jpeg = "chkJPEGFiles";
    const char* const parts = "chkSingleParts";
    const char* const criteria = "chkAllCriteria";
    const auto lines = [](const std::string& count) { return single + "\r\nlInEs:" + count; };
    const std::vector<Row> rows = {
        {"1/1", parts, jpeg, "", single, true},
        {"01/01", parts, jpeg, "", "Subject: kite.jpg (01/01)", true},
        {"11/12 has 1/1", parts, jpeg, "", "Subject: kite.jpg (11/12)", true},
        {"2/12", parts, jpeg, "", "Subject: kite.jpg (2/12)", false},
        {"parts do not matter", criteria, jpeg, "", "Subject: kite.jpg (2/12)", true},
        {"case of a name, in any line", criteria, jpeg, "", "From: a.JpGer", true},
        {"another file type", criteria, jpeg, "", "Subject: a.gif, a.bmp, a.mpg, a.jpeg", false},
        {"GIF", criteria, "chkGIFFiles", "", "Subject: a.gif", true},
        {"BMP", criteria, "chkBitMapFiles", "", "Subject: a.bmp", true},
        {"MPEG", criteria, "chkMPEGFiles", "", "Subject: a.mpg", true},
        {"no patterns", criteria, "", "", single, false},
        {"no patterns, everything", "chkAllArticles", "", "", "Subject: no", true},
        {"named alone", criteria, "", "cat; Dog ", "Subject: hotDOGs", true},
        {"named besides", criteria, jpeg, "cat;dog", "Subject: cat", true},
        {"an empty entry in the middle", criteria, "", "cat; ;dog", "Subject: no", true},
        {"a semicolon at the end", criteria, jpeg, "cat;", "Subject: no", false},
        {"at most, equal", parts, jpeg, "", lines(" 3000"), true, "At Most", "3000"},
        {"at most, more", parts, jpeg, "", lines(" 3000"), false, "At Most", "2999"},
        {"at least, equal", parts, jpeg, "", lines("3000 or so"), true, "At Least", "3000"},
        {"at least, less", parts, jpeg, "", lines("3000"), false, "At Least", "3001"},
        {"beyond 32 bits", parts, jpeg, "", lines("9999999999"), true, "At Most", "2147483647"},
        {"a whole number", parts, jpeg, "", lines("29.7"), true, "At Least", "30"},
        {"ten characters", parts, jpeg, "", lines("      300000"), true, "At Most", "3000"},
        {"nothing wanted", parts, jpeg, "", lines("3000"), true, "", "1"},
        {"no count", parts, jpeg, "", single, true, "At Least", "10"},
        {"X-Lines", parts, jpeg, "", single + "\r\nX-Lines: 5", true, "At Least", "10"},
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
        for (const char* box : {jpeg, "chkGIFFiles", "chkBitMapFiles", "chkMPEGFiles"})
            Check(box, box == row.fileType);
        Check(row.mode, true);
        TypeInto("txtNamed", row.named);
        ChooseEntry("cboSizeIs", row.sizeIs);
        TypeInto("txtKB", row.limit);
        Search();
        EXPECT_EQ(server.CommandCount("body"), row.wanted ? 1U : 0U);
        EXPECT_EQ(server.CommandCount("head"), row.mode == std::string("chkAllArticles") ? 0U : 1U);
    }
}

TEST_F(SearchCriteriaTest, AChangeCountsFromTheNextArticleOn)
{
    SampleServer server({GroupOf("alt.kites", 1, {"a\r\n", "b\r\n", "c\r\n", "d\r\n"})});
    Start({"alt.kites"}, server.Port());
    atCaption["Scanning 3 of 5 -- alt.kites"] = [] { TypeInto("txtNamed", "kite"), Check("chkJPEGFiles", false); };
    atCaption["Scanning 4 of 5 -- alt.kites"] = [] { TypeInto("txtNamed", "boat"); };
    atCaption["Scanning 5 of 5 -- alt.kites"] = [] { Check("chkAllArticles", true); };
    Search();
    EXPECT_THAT(captions, Contains("Getting 3 of 5 -- alt.kites"));
    EXPECT_THAT(captions, Not(Contains("Getting 4 of 5 -- alt.kites")));
    EXPECT_THAT(captions, Contains("Getting 5 of 5 -- alt.kites"));
}
