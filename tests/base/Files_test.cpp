#include "base/Files.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> Fields(
    const std::string& content, std::string_view (SequentialInput::*read)() = &SequentialInput::ReadQuotedField)
{
    const TemporaryFolder folder;
    MakeFile(folder.File("fields"), content);
    SequentialInput input(folder.File("fields"));
    EXPECT_TRUE(input.IsOpen());
    std::vector<std::string> fields;
    while (!input.AtEnd())
        fields.emplace_back((input.*read)());
    return fields;
}

}

TEST(Files, FieldsEndAtCommasAndLineEnds)
{
    using Texts = std::vector<std::string>;
    EXPECT_EQ(Fields("alt.kites\r\n  rec.a b\r\n"), (Texts{"alt.kites", "rec.a b"}));
    EXPECT_EQ(Fields("one,two\nthree"), (Texts{"one", "two", "three"}));
    EXPECT_EQ(Fields("\"a,b\r\nc\"\r\nd"), (Texts{"a,b\r\nc", "d"}));
    EXPECT_EQ(Fields("\"no end"), (Texts{"no end"}));
    EXPECT_EQ(Fields("a\r\n\r\nb\r\n"), (Texts{"a", "", "b"}));
    EXPECT_EQ(Fields(""), Texts{});
    EXPECT_EQ(Fields("\"a,b\r\n  c\"d\n\"", &SequentialInput::ReadField), (Texts{"\"a", "b", "c\"d", "\""}));
}

TEST(Files, RecordsAreReadAndWrittenInPlace)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("records");
    std::string record;
    EXPECT_EQ(RandomFile(path, RandomAccess::Read, 4).RecordCount(), 0);
    EXPECT_TRUE(RandomFile(path, RandomAccess::ReadWrite, 4).Write(1, "aaaa"));
    EXPECT_TRUE(RandomFile(path, RandomAccess::ReadWrite, 4).Write(3, "cccc"));
    EXPECT_TRUE(RandomFile(path, RandomAccess::ReadWrite, 4).Write(1, "AAAA"));
    EXPECT_EQ(ContentOf(path), std::string("AAAA\0\0\0\0cccc", 12));
    // What a crash left behind the last whole record does not count.
    MakeFile(path, "AAAABB");
    const RandomFile file(path, RandomAccess::Read, 4);
    EXPECT_EQ(file.RecordCount(), 1);
    EXPECT_FALSE(file.Read(2, record));
    EXPECT_TRUE(file.Read(1, record));
    EXPECT_EQ(record, "AAAA");
}

TEST(Files, ReplacingLeavesTheOldFileWhenItFails)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(ReplaceFile(folder.File("kept"), {"n", "ew"}));
    EXPECT_EQ(ContentOf(folder.File("kept")), "new");
    fs::create_directory(folder.File(".replacement.new"));
    EXPECT_TRUE(ReplaceFile(folder.File("kept"), {"newer"}));
    EXPECT_EQ(ContentOf(folder.File("kept")), "new");
}

namespace {

unsigned RightsOf(const std::string& path)
{
    struct stat status { };
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 0777;
}

}

TEST(Files, ALogIsForItsOwner)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("debug.log");
    for (const bool old : {false, true}) {
        if (old) {
            MakeFile(path, "");
            fs::permissions(path, fs::perms(0664));
        }
        EXPECT_FALSE(AppendToFile(path, "pass secret"));
        EXPECT_EQ(RightsOf(path), 0600U);
        EXPECT_EQ(ContentOf(path), "pass secret");
        fs::remove(path);
    }
}

TEST(Files, ALockOfAnotherUserIsNotTaken)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("lock");
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

TEST(Files, WritingDoesNotFollowALink)
{
    const TemporaryFolder folder;
    MakeFile(folder.File("precious"), "old");
    fs::create_symlink(folder.File("precious"), folder.File("article1.uue"));
    EXPECT_FALSE(WriteFile(folder.File("article1.uue"), "body", "\r\n"));
    EXPECT_EQ(ContentOf(folder.File("article1.uue")), "body\r\n");
    EXPECT_EQ(ContentOf(folder.File("precious")), "old");
}

TEST(Files, LookUpsTellFilesFromDirectories)
{
    const TemporaryFolder folder;
    MakeFile(folder.File("plain"), "");
    EXPECT_TRUE(FileExists(folder.File("plain")));
    EXPECT_FALSE(FileExists(folder.Path()));
    EXPECT_TRUE(DirExists(folder.Path()));
    EXPECT_TRUE(DirExists(folder.File("plain/")));
    EXPECT_FALSE(DirExists(folder.File("missing/")));
    EXPECT_FALSE(DirExists(""));
    EXPECT_EQ(MakeDirectory(folder.File("a/b")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(MakeDirectory(folder.File("plain")), std::errc::file_exists);
}

TEST(SettingsStore, KeepsTextsAndBytesUnderAnyKey)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("config/Tamarack.ini");
    const std::vector<std::string> keys{"1", "news.example.com", "a/b\\c", "100%2F", "K", "k", "news.example.com.pass"};
    const std::vector<std::string> values{"plain", "a, b; \"c\"", "\xFF\xFE raw", "gr\xC3\xBC\xC3\x9F", " ends ", "@x"};
    {
        Settings settings(path);
        for (std::size_t i = 0; i < keys.size(); ++i)
            settings.SaveSetting("Servers2", keys[i], values[i % values.size()]);
        for (const char* gone : {"gone", ""}) {
            settings.SaveSetting("Servers2", gone, "x");
            settings.DeleteSetting("Servers2", gone);
        }
    }
    EXPECT_EQ(RightsOf(path), 0600U);
    const Settings settings(path);
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(settings.GetSetting("Servers2", keys[i]), values[i % values.size()]) << keys[i];
    EXPECT_EQ(settings.GetSetting("Servers2", "gone"), "");
    EXPECT_EQ(settings.GetAllSettings("Servers2").size(), keys.size());
    EXPECT_TRUE(settings.GetAllSettings("Servers").empty());
}

// Whatever happens to the file meanwhile: the password is in it.
TEST(SettingsStore, IsForItsOwner)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("config/Tamarack.ini");
    const auto widen = [&path] { fs::permissions(path, fs::perms(0644)); };
    const mode_t before = umask(0);
    Settings settings(path);
    for (const std::function<void()>& change : std::initializer_list<std::function<void()>>{
             [] {}, [&path] { fs::remove(path); }, [&folder] { fs::remove_all(folder.File("config")); }, widen}) {
        change();
        settings.SaveSetting("Servers2", "news.example.com.pass", std::to_string(std::rand()));
        EXPECT_EQ(RightsOf(path), 0600U);
    }
    EXPECT_EQ(umask(before), 0U);
}

// What could not be written at once is written when it can be.
TEST(SettingsStore, IsForItsOwnerAlsoWhenWrittenLater)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("config/Tamarack.ini");
    Settings settings(path);
    fs::remove_all(folder.File("config"));
    MakeFile(folder.File("config"), "in its way");
    settings.SaveSetting("Servers2", "news.example.com.pass", "secret");
    fs::remove(folder.File("config"));
    fs::create_directory(folder.File("config"));
    QCoreApplication::processEvents();
    EXPECT_EQ(RightsOf(path), 0600U);
}

TEST(SettingsStore, ReadsWhatItCanOfADamagedFile)
{
    const TemporaryFolder folder;
    MakeFile(folder.File("Tamarack.ini"), "[Startup]\n6=a, b\n\x01\xFF[[garbage\n[Startup\n2=1");
    Settings settings(folder.File("Tamarack.ini"));
    EXPECT_EQ(settings.GetSetting("Startup", "6"), "a,b");
    settings.SaveSetting("Startup", "3", "1");
    EXPECT_EQ(Settings(folder.File("Tamarack.ini")).GetSetting("Startup", "3"), "1");
}
