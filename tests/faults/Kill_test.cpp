#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
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

constexpr int articles = 401; // from 2 on, a part of an attachment and a whole one in turn

std::string Attachment(int number)
{
    return std::string(static_cast<std::size_t>(2000 + number), static_cast<char>('a' + number % 26));
}

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

    // Has it come to that command?
    ::testing::AssertionResult Reaches(const SampleServer& server, const char* command)
    {
        const std::size_t before = server.CommandCount(command);
        StartVictim(server);
        return ::testing::AssertionResult(Until([&] { return server.CommandCount(command) > before; }));
    }

    // And has not come to an end by itself.
    void Kill()
    {
        victim.kill();
        ASSERT_TRUE(victim.waitForFinished());
        ASSERT_EQ(victim.exitStatus(), QProcess::CrashExit);
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
        Click("Command1"); // keeps what an end of the program keeps
    }
}

TEST_F(KilledProgramTest, AtAnyMomentLeavesWholeFiles)
{
    const char* const wanted = std::getenv("TAMARACK_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 12;
    std::vector<std::pair<int, std::string>> parts; // of which attachment
    for (int number = 0; number < 40; ++number) {
        for (const std::string& body : YencodeParts(Attachment(number), "p" + std::to_string(number) + ".jpg", 5))
            parts.emplace_back(number, body);
    }
    std::shuffle(parts.begin(), parts.end(), std::mt19937(5));
    std::vector<std::string> bodies;
    for (const auto& part : parts) {
        bodies.push_back(part.second);
        const int number = static_cast<int>(bodies.size()) + 2;
        bodies.push_back(Uuencode(Attachment(number), "k" + std::to_string(number) + ".jpg"));
    }
    // Many groups, so that a kill meets the writing of their file at times.
    SampleGroups groups{GroupOf("alt.kites", 1, bodies)};
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
        ASSERT_TRUE(Reaches(server, kill % 2 == 0 ? "group" : "list"));
        QTest::qWait(static_cast<int>(random() % 60));
        Kill();

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
        lost.insert(pointer);
        EXPECT_TRUE(ContentOf(ProgramFile("!@#!." + serverName)).ends_with("\"\r\n"));
        EXPECT_EQ(ContentOf(SelectedFile()), "alt.kites\r\n");
        EXPECT_EQ(Settings(folder.File("settings.ini")).GetSetting("Startup", "6"), "kept");
    }
    EXPECT_GT(stored, 0);

    // What no kill met in its article's turn becomes whole.
    ASSERT_TRUE(Reaches(server, "list"));
    Kill();
    std::set<int> broken;
    for (const int article : lost) {
        if (article > 0 && article % 2 == 0)
            broken.insert(parts[static_cast<std::size_t>(article / 2 - 1)].first);
    }
    EXPECT_LT(broken.size(), 20U);
    for (int number = 0; number < 40; ++number) {
        const std::string content = ContentOf(destination + "alt.kites/p" + std::to_string(number) + ".jpg");
        EXPECT_TRUE(content == Attachment(number) || broken.contains(number)) << number;
    }
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
    MakeFile(elsewhere + ".attachment-" + process + "-0.part", "half, and nothing tells of it");
    program->MainWindow().txtSelectDir.SetText(elsewhere);
    Search();
    EXPECT_THAT(FilesBelow(destination), testing::ElementsAre(held, "article7.uue", "red.jpg"));
    EXPECT_THAT(FilesBelow(elsewhere), testing::ElementsAre("alt.kites/blue.jpg"));
    close(holder);
}
