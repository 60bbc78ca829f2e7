#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/RandomBytes.h"

#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DiskTest : public ProgramTest {
protected:
    ~DiskTest() override
    {
        if (mounted)
            umount2(destination.c_str(), MNT_DETACH);
    }

    // A disk of its own for the destination. False where the user may not mount.
    bool Mount(unsigned long flags = 0)
    {
        return mounted = mount("/dev/stick", destination.c_str(), "tmpfs", flags, "size=200k") == 0;
    }

    bool mounted = false;
};

}

TEST_F(DiskTest, AFullDestinationKeepsWhatIsWhole)
{
    if (!Mount())
        GTEST_SKIP() << "The test of a full disk is passed over: mounting one takes root.";
    std::vector<std::string> bodies;
    for (const char filling : {'a', 'b', 'c', 'd'})
        bodies.push_back(Uuencode(std::string(50000, filling), std::string(1, filling) + ".jpg"));
    bodies.push_back(Uuencode("small", "small.jpg"));
    SampleServer server({GroupOf("alt.kites", 1, bodies)});
    Start({"alt.kites"}, server.Port());
    Check("chkGroupSubDir", false);
    Search();
    const std::vector<std::string> stored = FilesBelow(destination);
    EXPECT_THAT(stored,
        testing::AllOf(
            testing::Contains("a.jpg"), testing::Contains("small.jpg"), testing::Not(testing::Contains("d.jpg"))));
    for (const std::string& name : stored)
        EXPECT_EQ(ContentOf(destination + name), name == "small.jpg" ? "small" : std::string(50000, name[0]));
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: " + std::to_string(stored.size()));
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(6, "alt.kites"));
    EXPECT_THAT(desktop.boxes, IsEmpty());
}

TEST_F(DiskTest, ADestinationThatCannotBeWrittenOrGoes)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")})});
    Start({"alt.kites"}, server.Port());
    if (Mount()) {
        MakeFile(destination + "kept.jpg", "old");
        ASSERT_TRUE(Mount(MS_REMOUNT | MS_RDONLY));
        Search();
        EXPECT_THAT(FilesBelow(destination), ElementsAre("kept.jpg"));
        EXPECT_EQ(PanelText("StatusBar1", 2), "Items: 0");
        ASSERT_EQ(umount(destination.c_str()), 0);
        mounted = false;
    }
    Forget();
    atCaption["Finished decoding 2 of 3 -- alt.kites"] = [this] { fs::remove_all(destination); };
    Search();
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(3, "alt.kites"));
    PressAlt(Qt::Key_N);
    EXPECT_TRUE(Until([this] { return !desktop.boxes.empty(); }));
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Directory Error"));
    EXPECT_EQ(CurrentTab("SSTMain"), 0);
}

TEST_F(DiskTest, DamagedFilesOfTheProgram)
{
    SampleServer server({GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg")})});
    const std::string noise = RandomBytes(5000);
    const std::string groups = ProgramFile("!@#!." + serverName), ini = folder.File("settings.ini");
    for (const std::string& file : {PointerFile(), SelectedFile(), groups, ini}) {
        for (const std::string& content :
            std::vector<std::string>{noise, noise.substr(0, 83), "\"", "", "directory", "pipe", "unreadable"}) {
            if (file == ini && (content == "pipe" || content == "unreadable"))
                continue; // the toolkit waits for a pipe's other end, and writes to what can be written only
            if (file == PointerFile() && content == "unreadable")
                continue; // it would be written to
            SCOPED_TRACE(file + " " + content.substr(0, 9));
            program.reset();
            for (const std::string& each : {PointerFile(), SelectedFile(), groups, ini, destination})
                fs::remove_all(each);
            MakeFile(groups, "\"\"\r\n");
            MakeFile(ini, "[Servers]\n127.0.0.1=1\n");
            fs::remove_all(file);
            if (content == "directory")
                fs::create_directories(file);
            else if (content == "pipe")
                ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
            else if (content == "unreadable")
                fs::create_symlink("/proc/self/mem", file);
            else
                MakeFile(file, content);
            MakeFile(destination + "kept.jpg", "old");
            if (file == ini) // without a server, the start asks for one
                WhenUp("frmNewsServer", [] {
                    TypeInto("txtNewsServer", serverName);
                    Click("cmdSave");
                });
            Start();
            TypeInto("txtPort", std::to_string(server.Port()));
            program->MainWindow().txtSelectDir.SetText(destination);
            Click("cmdClearAll");
            TypeInto("txtManual", "alt.kites");
            Click("Command3");
            desktop.boxes.clear();
            Search();
            EXPECT_THAT(desktop.boxes, IsEmpty());
            EXPECT_EQ(ContentOf(destination + "kept.jpg"), "old");
            EXPECT_EQ(ContentOf(destination + "alt.kites/red.jpg"), "red");
            Click("Command1");
        }
    }
}
