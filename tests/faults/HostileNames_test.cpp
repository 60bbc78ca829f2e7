#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>

namespace fs = std::filesystem;

namespace {

// That try to leave the directory, to overwrite, to follow links, to pass for others.
std::vector<std::string> HostileNames()
{
    const std::vector<std::string> parts{"../", "..", "/etc/", "~/", "./", "..\\", "C:\\", "//", "%2e%2e%2f", "-rf ",
        "link/", "link", "|touch gone", "$(touch gone)", "\xe2\x80\xaegpj.exe", "\x1b[2J", "\x7f\x01", "\xc0\xaf",
        "\xff\xfe", "<b>", "&amp;", "article2.uue", "CON", " ", ".", "'", "\"", "%s%n", "*?", "!@#!.127.0.0.1"};
    std::vector<std::string> names;
    std::mt19937 random(7);
    while (names.size() < 200) {
        std::string name;
        for (std::size_t count = 1 + names.size() % 3; count > 0; --count)
            name += parts[random() % parts.size()];
        names.push_back(name + (names.size() % 2 ? ".jpg" : ""));
    }
    return names;
}

}

using HostileNamesTest = ProgramTest;

TEST_F(HostileNamesTest, OfAttachmentsAndGroups)
{
    MakeFile(folder.File("outside"), "precious");
    MakeFile(destination + "kept.jpg", "old");
    fs::create_symlink(folder.File("outside"), destination + "link");
    std::vector<std::string> bodies{Uuencode("new", "kept.jpg")};
    std::set<std::string> names;
    for (std::string name : HostileNames()) {
        bodies.push_back(Uuencode("hostile", name));
        // A group's name is one word on the wire.
        std::erase_if(name, [](unsigned char c) { return c <= ' ' || c == 0x7f || c == ',' || c == '"'; });
        names.insert(name);
    }
    names.erase("");
    SampleGroups groups;
    for (const std::string& name : names)
        groups.push_back(GroupOf(name, 1, {Uuencode("hostile", "kite.jpg")}));
    groups.push_back(GroupOf("alt.kites", 1, bodies));
    SampleServer server(groups);
    names.insert("alt.kites");
    Start({names.begin(), names.end()}, server.Port());
    Check("chkAllArticles", true);
    ChooseMenu("mnuInteractiveDownload");
    for (const bool subDirectories : {false, true}) {
        Check("chkGroupSubDir", subDirectories);
        MakeFile(PointerFile(), "");
        Search();
    }
    EXPECT_EQ(ContentOf(folder.File("outside")), "precious");
    EXPECT_EQ(ContentOf(destination + "kept.jpg"), "old");
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path()))
        EXPECT_THAT(entry.path().filename().string(), testing::AnyOf("outside", "pictures", "program", "settings.ini"));
    int stored = 0;
    for (const std::string& name : FilesBelow(destination)) {
        EXPECT_FALSE(name.starts_with('.')) << name;
        EXPECT_TRUE(std::ranges::none_of(name, [](unsigned char c) { return c < 0x20 || c == 0x7f; })) << name;
        stored += !fs::is_symlink(destination + name) && ContentOf(destination + name) == "hostile";
    }
    // Equal attachments of one name share one file.
    EXPECT_GT(stored, 30);
    EXPECT_EQ(ContentOf(PointerFile()).size() % 84, 0U);
    EXPECT_GT(ContentOf(PointerFile()).size(), 84U * 30);
    const auto turned = testing::HasSubstr("\xe2\x80\xae");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), testing::Each(testing::Not(turned)));
    EXPECT_THAT(captions, testing::Each(testing::Not(turned)));
    // What is kept are the bytes.
    Click("Command1");
    EXPECT_THAT(ContentOf(SelectedFile()), testing::HasSubstr("\xe2\x80\xaegpj.exe"));
}
