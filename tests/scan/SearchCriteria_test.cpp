#include "tests/shell/ProgramTest.h"

using testing::ElementsAre;

namespace {

using SearchCriteriaTest = ProgramTest;

}

TEST_F(SearchCriteriaTest, LimitsAreEnabledByTheirCheckBoxes)
{
    Start();
    for (const auto& [box, controls] :
        std::map<std::string, std::vector<const char*>>{{"chkMaximumFiles", {"txtMaxToDownload", "udMaxToDownload"}},
            {"chkLimitPictures", {"txtLimitPictures", "udLimitPictures", "lblPerNewsGroup"}}}) {
        for (const bool wanted : {false, true, false}) {
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
    std::vector<std::string> warnings;
    for (const char* option : {"chkAllCriteria", "chkSingleParts", "chkAllArticles", "chkAllArticles"}) {
        Check(option, true);
        EXPECT_TRUE(IsChecked(option));
        warnings.push_back(desktop.boxes.empty() ? "" : desktop.boxes.front().title);
        desktop.boxes.clear();
    }
    EXPECT_THAT(warnings, ElementsAre("Warning", "", "Warning", ""));
    EXPECT_FALSE(IsChecked("chkAllCriteria"));
    Click("chkAllCriteria");
    EXPECT_EQ(desktop.boxes.at(0).text,
        "Currently the Tamarack is not able to\r\ndecode multi-part messages.  Therefore,\r\nsome attachments might "
        "not view correclty.");
}

TEST(FilePatternsTest, InTheirOrder)
{
    TestDesktop desktop;
    frmTamarack MainForm;
    SearchCriteria criteria(MainForm, desktop);
    criteria.BuildFilePatterns();
    EXPECT_EQ(criteria.FilePatterns, ".jpg");
    MainForm.txtNamed.SetText(" ");
    EXPECT_EQ(criteria.FilePatterns, ".jpg; ");
    for (CheckBox* box : {&MainForm.chkGIFFiles, &MainForm.chkMPEGFiles, &MainForm.chkBitMapFiles})
        box->SetValue(1);
    MainForm.txtNamed.SetText("cat;dog");
    EXPECT_EQ(criteria.FilePatterns, ".jpg;.bmp;.mpg;.gif;cat;dog");
    for (CheckBox* box :
        {&MainForm.chkGIFFiles, &MainForm.chkMPEGFiles, &MainForm.chkBitMapFiles, &MainForm.chkJPEGFiles})
        box->SetValue(0);
    EXPECT_EQ(criteria.FilePatterns, "cat;dog");
    MainForm.txtNamed.SetText("");
    EXPECT_EQ(criteria.FilePatterns, "");
}
