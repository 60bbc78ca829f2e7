#include "base/Files.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

unsigned RightsOf(const std::string& path) { return static_cast<unsigned>(fs::status(path).permissions()); }

class FilesTest : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string path = folder.File("config/file");
};

using SettingsTest = FilesTest;

}

TEST_F(FilesTest, WritingLeavesWhatStandsInItsWay)
{
    EXPECT_FALSE(ReplaceFile(folder.File("kept"), {"n", "ew"}));
    fs::create_directory(folder.File(".replacement.new"));
    EXPECT_TRUE(ReplaceFile(folder.File("kept"), {"newer"}));
    EXPECT_EQ(ContentOf(folder.File("kept")), "new");
    fs::create_symlink(folder.File("kept"), folder.File("link"));
    EXPECT_FALSE(WriteFile(folder.File("link"), "body", "\r\n"));
    EXPECT_EQ(ContentOf(folder.File("link")), "body\r\n");
    EXPECT_EQ(ContentOf(folder.File("kept")), "new");
}

TEST_F(FilesTest, ALogIsForItsOwner)
{
    const std::string log = folder.File("debug.log");
    EXPECT_FALSE(AppendToFile(log, "pass "));
    EXPECT_EQ(RightsOf(log), 0600U);
    fs::permissions(log, fs::perms(0664));
    EXPECT_FALSE(AppendToFile(log, "secret"));
    EXPECT_EQ(RightsOf(log), 0600U);
    EXPECT_EQ(ContentOf(log), "pass secret");
}

TEST_F(FilesTest, ALockOfAnotherUserIsNotTaken)
{
    MakeFile(path, "");
    fs::permissions(path, fs::perms::none);
    fs::permissions(folder.Path(), fs::perms::all);
    // Root opens anything, so that somebody else has to try.
    const auto trial = [&] {
        if (geteuid() == 0 && setuid(65534) != 0)
            std::_Exit(2);
        const LockFile others(path);
        const std::string own = folder.File("own");
        MakeFile(own, "");
        fs::permissions(own, fs::perms::none);
        const LockFile first(own), second(own);
        const bool isTold = others.OfAnotherUser() && !first.OfAnotherUser();
        std::_Exit(isTold && !others.HeldByAnother() && !first.HeldByAnother() && second.HeldByAnother() ? 0 : 1);
    };
    EXPECT_EXIT(trial(), testing::ExitedWithCode(0), "");
}

TEST_F(SettingsTest, KeepsTextsAndBytesUnderAnyKey)
{
    const std::map<std::string, std::string> texts{{"1", "plain"}, {"a/b\\c", "a, b; \"c\""},
        {"100%2F", "\xFF\xFE raw"}, {"K", "gr\xC3\xBC\xC3\x9F"}, {"k", " ends "}, {"news.example.com.pass", "@x"}};
    MakeFile(path, "[Startup]\n6=by, hand");
    {
        Settings settings(path);
        EXPECT_EQ(RightsOf(path), 0600U);
        for (const auto& [key, text] : texts)
            settings.SaveSetting("Servers2", key, text);
        for (const char* gone : {"gone", ""}) {
            settings.SaveSetting("Servers2", gone, "x");
            settings.DeleteSetting("Servers2", gone);
        }
    }
    const Settings settings(path);
    for (const auto& [key, text] : texts)
        EXPECT_EQ(settings.GetSetting("Servers2", key), text) << key;
    EXPECT_EQ(settings.GetSetting("Servers2", "gone"), "");
    EXPECT_EQ(settings.GetAllSettings("Servers2").size(), texts.size());
    EXPECT_EQ(settings.GetSetting("Startup", "6"), "by,hand");
}

// Whatever happens to the file meanwhile, and also when it is written later: the password is in it.
TEST_F(SettingsTest, IsForItsOwner)
{
    const mode_t before = umask(0);
    Settings settings(path);
    const std::string directory = DirectoryOf(path);
    for (int change = 0; change < 3; ++change) {
        if (change == 1)
            fs::remove_all(directory);
        else if (change == 2)
            fs::permissions(path, fs::perms(0644));
        settings.SaveSetting("Servers2", "news.example.com.pass", std::to_string(std::rand()));
        EXPECT_EQ(RightsOf(path), 0600U);
    }
    EXPECT_EQ(umask(before), 0U);

    fs::remove_all(directory);
    MakeFile(folder.File("config"), "in its way");
    settings.SaveSetting("Servers2", "news.example.com.pass", "secret");
    fs::remove(folder.File("config"));
    fs::create_directory(directory);
    QCoreApplication::processEvents();
    EXPECT_EQ(RightsOf(path), 0600U);
}
