#include "tests/shell/ProgramTest.h"

namespace {

using SearchCriteriaTest = ProgramTest;

const std::string single = "Subject: kite.jpg (1/1)";

}

TEST_F(SearchCriteriaTest, WarningOfMultiPartMessages)
{
    settings.SaveSetting("Startup", "7", "False");
    settings.SaveSetting("Startup", "8", "True");
    Start();
    for (const auto& [option, warnings] :
        {std::pair("chkAllCriteria", 1), {"chkSingleParts", 1}, {"chkAllArticles", 2}}) {
        Check(option, true);
        EXPECT_EQ(desktop.BoxTitles(), std::vector<std::string>(static_cast<std::size_t>(warnings), "Warning"));
    }
}

// Which heads are followed by a body command.
TEST_F(SearchCriteriaTest, Heads)
{
    struct Row {
        bool wanted;
        std::string head;
        const char* mode = "chkSingleParts";
        std::string fileType = "chkJPEGFiles"; // the check box that is checked
        const char* named = "";
        const char* sizeIs = "";
        const char* limit = "10";
    };
    const char* const criteria = "chkAllCriteria";
    const auto lines = [](bool wanted, const std::string& count, const char* sizeIs, const char* limit) {
        Row row{wanted, single + "\r\nlInEs:" + count};
        row.sizeIs = sizeIs;
        row.limit = limit;
        return row;
    };
    const std::vector<Row> rows = {
        {true, single}, {true, "Subject: kite.jpg (01/01)"}, {true, "Subject: kite.jpg (11/12)"}, // which has 1/1
        {false, "Subject: kite.jpg (2/12)"}, {true, "Subject: kite.jpg (2/12)", criteria},
        {true, "From: a.JpGer", criteria}, {false, "Subject: a.gif, a.bmp, a.mpg, a.jpeg", criteria},
        {true, "Subject: a.gif", criteria, "chkGIFFiles"}, {true, "Subject: a.bmp", criteria, "chkBitMapFiles"},
        {true, "Subject: a.mpg", criteria, "chkMPEGFiles"}, {false, single, criteria, ""},
        {true, "Subject: no", "chkAllArticles", ""}, {true, "Subject: hotDOGs", criteria, "", "cat; Dog "},
        {true, "Subject: cat", criteria, "chkJPEGFiles", "cat;dog"}, {true, "Subject: no", criteria, "", "cat; ;dog"},
        {false, "Subject: no", criteria, "chkJPEGFiles", "cat;"}, lines(true, " 3000", "At Most", "3000"),
        lines(false, " 3000", "At Most", "2999"), lines(true, "3000 or so", "At Least", "3000"),
        lines(false, "3000", "At Least", "3001"), lines(true, "9999999999", "At Most", "2147483647"), // beyond 32 bits
        lines(true, "29.7", "At Least", "30"), lines(true, "      300000", "At Most", "3000"), // ten characters
        lines(true, "3000", "", "1"),
        {true, single + "\r\nX-Lines: 5", "chkSingleParts", "chkJPEGFiles", "", "At Least"}, // no count
    };
    SampleServer server({});
    Start({"alt.kites"}, server.Port());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.head + row.named + row.sizeIs + row.limit);
        // A search loses the first header line of its first head.
        server.SetGroups(
            {{"alt.kites", {{1, "", ""}, {2, "Path: lost 1/1 .jpg\r\n" + row.head + "\r\n", "text\r\n"}}}});
        server.ClearLog();
        Forget();
        for (const char* box : {"chkJPEGFiles", "chkGIFFiles", "chkBitMapFiles", "chkMPEGFiles"})
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
