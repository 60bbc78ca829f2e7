#include "base/Files.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <cstdlib>
#include <filesystem>
#include <functional>
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

TEST_F(FilesTest, ReplacingLeavesTheOldFileWhenItFails)
{
    EXPECT_FALSE(ReplaceFile(folder.File("kept"), {"n", "ew"}));
    EXPECT_EQ(ContentOf(folder.File("kept")), "new");
    fs::create_directory(folder.File(".replacement.new"));
    EXPECT_TRUE(ReplaceFile(folder.File("kept"), {"newer"}));
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
        const LockFile lock(path);
        const std::string own = folder.File("own");
        MakeFile(own, "");
        fs::permissions(own, fs::perms::none);
        const LockFile first(own);
        const LockFile second(own);
        std::_Exit(lock.OfAnotherUser() && !lock.HeldByAnother() && !first.OfAnotherUser() && !first.HeldByAnother()
                    && second.HeldByAnother()
                ? 0
                : 1);
    };
    EXPECT_EXIT(trial(), testing::ExitedWithCode(0), "");
    EXPECT_FALSE(LockFile(folder.File("mine")).OfAnotherUser());
}

TEST_F(FilesTest, WritingDoesNotFollowALink)
{
    MakeFile(folder.File("precious"), "old");
    fs::create_symlink(folder.File("precious"), folder.File("link"));
    EXPECT_FALSE(WriteFile(folder.File("link"), "body", "\r\n"));
    EXPECT_EQ(ContentOf(folder.File("link")), "body\r\n");
    EXPECT_EQ(ContentOf(folder.File("precious")), "old");
}

TEST_F(FilesTest, LookUpsTellFilesFromDirectories)
{
    MakeFile(folder.File("plain"), "");
    EXPECT_FALSE(FileExists(folder.Path()));
    EXPECT_TRUE(DirExists(folder.File("plain/")));
    EXPECT_FALSE(DirExists(folder.File("missing/")));
    EXPECT_EQ(MakeDirectory(folder.File("a/b")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(MakeDirectory(folder.File("plain")), std::errc::file_exists);
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
    for (const std::function<void()>& change :
        std::initializer_list<std::function<void()>>{[] {}, [&] { fs::remove(path); },
            [&] { fs::remove_all(directory); }, [&] { fs::permissions(path, fs::perms(0644)); }}) {
        change();
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
