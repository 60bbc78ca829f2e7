#include "tests/shell/ProgramTest.h"

#include "decoder/SetJournal.h"
#include "demo/sample/Encoders.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const char* const folderVariable = "TAMARACK_KILL_FOLDER";
const char* const portVariable = "TAMARACK_KILL_PORT";
const char* const captionVariable = "TAMARACK_KILL_CAPTION"; // at which the victim kills itself

constexpr int articles = 400;

std::string Attachment(int number)
{
    return std::string(static_cast<std::size_t>(2000 + number), static_cast<char>('a' + number % 26));
}

std::string SpreadName(int number) { return "p" + std::to_string(number) + ".jpg"; }

// What the articles bring: every second one a part of an attachment that is spread over five, in no order, the others a
// whole one.
struct KillPostings {
    KillPostings()
    {
        std::vector<std::pair<int, std::string>> parts;
        for (; (spread + 1) * 5 < articles / 2; ++spread) {
            for (std::string& body : YencodeParts(Attachment(spread), SpreadName(spread), 5))
                parts.emplace_back(spread, std::move(body));
        }
        std::shuffle(parts.begin(), parts.end(), std::mt19937(5));
        for (int number = 2; number <= articles; ++number) {
            if (number % 2 == 0 || parts.empty()) {
                bodies.push_back(Uuencode(Attachment(number), "k" + std::to_string(number) + ".jpg"));
            } else {
                bodies.push_back(parts.back().second);
                partIn[number] = parts.back().first;
                parts.pop_back();
            }
        }
    }

    // Are the parts of these articles there, or the files that they make? Those of the lost ones may not be.
    void ExpectPartsBelow(int pointer, const std::set<int>& lost, const std::string& destination) const
    {
        std::map<std::string, std::size_t> expected;
        for (const auto& [article, attachment] : partIn)
            expected[SpreadName(attachment)] += article < pointer && !lost.contains(article) ? 1 : 0;
        std::map<std::string, std::size_t> kept;
        for (const std::string& file : FilesBelow(destination + ".tamarack-parts")) {
            const auto journal = SetJournal::Read(ContentOf(destination + ".tamarack-parts/" + file));
            if (journal)
                kept[journal->Name()] = journal->Parts().size();
        }
        for (const auto& [name, count] : expected) {
            const bool isWhole = fs::exists(destination + name) || fs::exists(destination + "alt.kites/" + name);
            EXPECT_TRUE(isWhole || kept[name] >= count) << name << ": " << kept[name] << " of " << count << " parts";
        }
    }

    std::vector<std::string> bodies; // from article 2 on
    std::map<int, int> partIn; // article: attachment
    int spread = 0; // attachments in parts
};

class KilledProgramTest : public ProgramTest {
protected:
    void StartVictim(const SampleServer& server, const QString& caption = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(folderVariable, QString::fromStdString(folder.Path()));
        environment.insert(portVariable, QString::number(server.Port()));
        environment.insert(captionVariable, caption);
        environment.insert("TMPDIR", QString::fromStdString(folder.Path())); // what it cannot clear away goes with this
        victim.setProcessEnvironment(environment);
        victim.start(QCoreApplication::applicationFilePath(),
            {"--gtest_also_run_disabled_tests", "--gtest_filter=Kill.DISABLED_Victim"});
    }

    QProcess victim;
};

}

// What is killed: the whole program in a process of its own, searching and refreshing without end.
TEST(Kill, DISABLED_Victim)
{
    const char* const folder = std::getenv(folderVariable);
    ASSERT_NE(folder, nullptr);
    TestDesktop desktop;
    Program program(desktop, ProgramPlaces{std::string(folder) + "/program/", std::string(folder) + "/settings.ini"});
    program.MainWindow().Timer2.SetInterval(std::chrono::milliseconds(1));
    program.Start();
    TypeInto("txtPort", std::getenv(portVariable));
    QObject::connect(WindowNamed("frmTamarack"), &QWidget::windowTitleChanged, [](const QString& title) {
        if (title == std::getenv(captionVariable))
            raise(SIGKILL);
    });
    while (true) {
        Click("cmdFindNow");
        Click("cmdRefresh");
        // Keeps what an end of the program keeps.
        Click("Command1");
    }
}

TEST_F(KilledProgramTest, AtAnyMomentLeavesWholeFiles)
{
    const char* const wanted = std::getenv("TAMARACK_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 12;
    const KillPostings postings;
    // Many groups, so that a kill meets the writing of their file at times.
    SampleGroups groups{GroupOf("alt.kites", 1, postings.bodies)};
    while (groups.size() < 5000)
        groups.push_back({"alt.boats" + std::to_string(groups.size()), {}});
    SampleServer server(groups);
    MakeFile(SelectedFile(), "alt.kites\r\n");
    settings.SaveSetting("Startup", "6", "kept");
    std::mt19937 random(static_cast<unsigned>(kills));
    int last = 0;
    int stored = 0;
    std::set<int> lost; // articles that were in hand
    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE(kill);
        if (last >= articles) { // and from the first article again
            Forget();
            last = 0;
            lost.clear();
        }
        StartVictim(server);
        // This start works, and has come to its search or to its refresh.
        const char* const moment = kill % 2 == 0 ? "group" : "list";
        const std::size_t before = server.CommandCount(moment);
        ASSERT_TRUE(Until([&] { return server.CommandCount(moment) > before; }));
        QTest::qWait(static_cast<int>(random() % 60));
        victim.kill();
        ASSERT_TRUE(victim.waitForFinished());
        ASSERT_EQ(victim.exitStatus(), QProcess::CrashExit); // it has not come to an end by itself

        const std::string record = ContentOf(PointerFile());
        ASSERT_EQ(record.size() % 84, 0U);
        int pointer = 0;
        if (!record.empty()) {
            pointer = static_cast<unsigned char>(record[0]) | static_cast<unsigned char>(record[1]) << 8;
            EXPECT_EQ(record, PointerRecord(pointer, "alt.kites"));
        }
        EXPECT_GE(pointer, last);
        EXPECT_LE(pointer, articles);
        last = pointer;
        for (const std::string& file : FilesBelow(destination)) {
            const std::string name = file.substr(file.find('/') + 1);
            if (file.starts_with('.') || name.starts_with('.') || name.starts_with("article"))
                continue; // parts, one that was being written, or a body
            ++stored;
            const int number = std::atoi(name.c_str() + 1);
            EXPECT_EQ(ContentOf(destination + file), Attachment(number)) << name;
            EXPECT_TRUE(number <= pointer || name[0] == 'p');
        }
        postings.ExpectPartsBelow(pointer, lost, destination);
        lost.insert(pointer);
        EXPECT_TRUE(ContentOf(ProgramFile("!@#!." + serverName)).ends_with("\"\r\n"));
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.kites\r\n");
        EXPECT_EQ(Settings(folder.File("settings.ini")).GetSetting("Startup", "6"), "kept");
    }
    EXPECT_GT(stored, 0);

    // With each part coming once more, all attachments become whole.
    fs::remove(PointerFile());
    const std::size_t before = server.CommandCount("list");
    StartVictim(server);
    ASSERT_TRUE(Until([&] { return server.CommandCount("list") > before; }));
    victim.kill();
    ASSERT_TRUE(victim.waitForFinished());
    for (int number = 0; number < postings.spread; ++number)
        EXPECT_EQ(ContentOf(destination + "alt.kites/" + SpreadName(number)), Attachment(number)) << number;
}

TEST_F(KilledProgramTest, WhatItHadInHandGoesAtTheNextSearch)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")})});
    MakeFile(SelectedFile(), "alt.kites\r\n");
    StartVictim(server, "Finished decoding 2 of 3 -- alt.kites");
    ASSERT_TRUE(victim.waitForStarted());
    const std::string process = std::to_string(victim.processId());
    ASSERT_TRUE(victim.waitForFinished());
    EXPECT_THAT(FilesBelow(destination), testing::ElementsAre("article2.uue", "red.jpg"));
    // As if it had been killed a moment before, too, or one whose number has another process by now. What somebody
    // holds stays, though no process of that number lives here, and so does what is the user's.
    MakeFile(destination + ".attachment-" + process + "-0.part", "half");
    MakeFile(destination + ".attachment-" + std::to_string(getppid()) + "-0.part", "half");
    MakeFile(destination + "alt.kites/.attachment-" + process + "-0.part", "half a copy");
    const std::string held = ".attachment-" + process + "-1.part";
    MakeFile(destination + held, "half");
    const int holder = open((destination + held).c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(flock(holder, LOCK_EX), 0);
    MakeFile(destination + "article7.uue", "kept");
    Start({"alt.kites"}, server.Port());
    const std::string elsewhere = folder.File("elsewhere/");
    fs::create_directory(elsewhere);
    program->MainWindow().txtSelectDir.SetText(elsewhere);
    Search();
    EXPECT_THAT(FilesBelow(destination), testing::ElementsAre(held, "article7.uue", "red.jpg"));
    EXPECT_THAT(FilesBelow(elsewhere), testing::ElementsAre("alt.kites/blue.jpg"));
    close(holder);
}
