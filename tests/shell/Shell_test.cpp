#include "program-test/ProgramTest.h"

#include <filesystem>

using testing::IsEmpty;

namespace {

struct StoredControl {
    const char* key;
    std::string control;
    const char* design; // what it shows without a stored value
    const char* stored; // another value
    const char* shown; // and what the control shows of it
};

const std::vector<StoredControl> storedControls
    = {{"2", "chkJPEGFiles", "on", "0", "off"}, {"3", "chkGIFFiles", "off", "1", "on"},
        {"4", "chkBitMapFiles", "off", "1", "on"}, {"5", "chkMPEGFiles", "off", "1", "on"},
        {"6", "txtNamed", "", "a, b;\"c\"=%41", "a, b;\"c\"=%41"}, {"7", "chkSingleParts", "on", "False", "off"},
        {"8", "chkAllArticles", "off", "False", "off"}, {"9", "chkAllCriteria", "off", "True", "on"},
        {"10", "chkMaximumFiles", "off", "1", "on"}, {"11", "txtMaxToDownload", "10", "25", "25"},
        {"12", "chkLimitPictures", "off", "1", "on"}, {"13", "txtLimitPictures", "10", "7", "7"},
        {"14", "txtKB", "10", "300", "300"}, {"15", "cboSizeIs", "", "At Most", "At Most"},
        {"16", "chkGroupSubDir", "on", "0", "off"}, {"AutoLoad", "chkAutoLoad", "on", "0", "off"}};

class ShellTest : public ProgramTest {
protected:
    void ExpectAll(const char* StoredControl::*column, const std::string& directory)
    {
        for (const StoredControl& row : storedControls) {
            const bool isChecked = row.control.starts_with("chk") && IsChecked(row.control);
            const std::string shown = row.control.starts_with("chk") ? isChecked ? "on" : "off" : TextOf(row.control);
            EXPECT_EQ(shown, row.*column) << row.control;
        }
        EXPECT_EQ(TextOf("txtSelectDir"), directory);
    }
};

}

TEST_F(ShellTest, SettingsComeBackAndAreKept)
{
    settings.DeleteSetting("Startup", "1");
    Start();
    ExpectAll(&StoredControl::design, std::filesystem::current_path().string() + "/");
    EXPECT_EQ(settings.GetSetting("Startup", "2"), "");
    Click("Command1");
    EXPECT_EQ(settings.GetSetting("Startup", "2"), "1");
    EXPECT_EQ(settings.GetSetting("Startup", "7"), "True");

    for (const StoredControl& row : storedControls)
        settings.SaveSetting("Startup", row.key, row.stored);
    settings.SaveSetting("Startup", "1", "/no such place");
    Start();
    ExpectAll(&StoredControl::shown, "/no such place");
    // The handlers follow a value that was brought back, except the warning.
    EXPECT_TRUE(IsEnabled("txtMaxToDownload"));
    EXPECT_TRUE(IsEnabled("lblPerNewsGroup"));
    EXPECT_THAT(desktop.boxes, IsEmpty());

    for (const StoredControl& row : storedControls)
        settings.DeleteSetting("Startup", row.key);
    ChooseMenu("mnuClose");
    EXPECT_EQ(desktop.programEnds, 2);
    for (const StoredControl& row : storedControls)
        EXPECT_EQ(settings.GetSetting("Startup", row.key), row.stored) << row.key;
    EXPECT_EQ(settings.GetSetting("Startup", "1"), "/no such place");
}

TEST_F(ShellTest, OddSettingsLeaveTheDesign)
{
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{
             {"2", "yes"}, {"7", "maybe"}, {"15", "At Sea"}, {"AutoLoad", "7"}})
        settings.SaveSetting("Startup", key, value);
    Start();
    ExpectAll(&StoredControl::design, destination);
}
