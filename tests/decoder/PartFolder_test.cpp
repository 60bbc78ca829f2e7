#include "tests/decoder/PartsTest.h"

#include <chrono>
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class PartFolderTest : public PartsTest {
protected:
    // The only set's, without the ending.
    std::string SetPath() const
    {
        const std::string file = FilesBelow(parts).front(); // "0123456789abcdef-0.data"
        return parts + "/" + file.substr(0, file.find('.'));
    }

    static void Age(const std::string& file, std::chrono::hours age)
    {
        fs::last_write_time(file, fs::file_time_type::clock::now() - age);
    }
};

}

// A kill can leave any beginning of the last record, and a disk without power anything.
TEST_F(PartFolderTest, WhateverHappensToItsFilesNoWrongFileAppears)
{
    const auto bodies = Spread(bytes, 4);
    const auto completes = [&](const char* what, const std::function<void(const std::string& path)>& spoil) {
        SCOPED_TRACE(what);
        Await({bodies[2], bodies[0], bodies[3]});
        spoil(SetPath());
        Restart();
        // All that is gone comes again.
        int whole = 0;
        for (const std::size_t i : {1U, 0U, 2U, 3U}) {
            if (Decode(bodies[i]) > 0 && ++whole == 1)
                ExpectWhole(bytes);
        }
        EXPECT_EQ(whole, 1) << what;
        fs::remove_all(parts);
    };
    std::string journal;
    completes("nothing", [&](const std::string& path) { journal = ContentOf(path + ".journal"); });
    EXPECT_EQ(journal.size(), 29U + 3 * 32);
    const auto spoils = [&](const char* what, const std::string& content, const char* file = ".journal") {
        completes(what, [&](const std::string& path) { MakeFile(path + file, content); });
    };
    for (std::size_t at = 0; at < journal.size(); ++at) {
        spoils("cut off", journal.substr(0, at));
        std::string changed = journal;
        changed[at] = static_cast<char>(~changed[at]);
        spoils("changed", changed);
    }
    spoils("more behind it", journal + "noise");
    spoils("noise", RandomBytes(5000));
    spoils("other data", RandomBytes(10'007, 5), ".data");
    spoils("data cut off", bytes.substr(0, 5000), ".data");
    spoils("data too long", bytes + std::string(40'000, 'x'), ".data");
    for (const char* file : {".journal", ".data"})
        completes(file, [&](const std::string& path) { fs::remove(path + file); });

    // One part only is waited for again.
    Await({bodies[0], bodies[2], bodies[3]});
    fs::resize_file(SetPath() + ".data", 9000);
    Await({bodies[1]});
    EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 4}));
    EXPECT_EQ(Decode(bodies[3]), 1);
    EXPECT_FALSE(fs::exists(parts));
}

TEST_F(PartFolderTest, NothingOutsideIsTouched)
{
    const TemporaryFolder elsewhere;
    const std::string target = elsewhere.File("target");
    const auto bodies = Spread(bytes, 2);
    Await({bodies[0]});
    const std::string set = SetPath();
    struct Row {
        std::string place;
        int status; // of the second part
        int ofDirectory; // with a directory in its place
    };
    for (const Row& row :
        {Row{parts, -3, -1}, Row{set + ".journal", -1, -1}, Row{set + ".data", -1, -1}, Row{parts + "/lock", 1, -3}}) {
        for (const std::string what : {"link", "dangling", "hard", "directory", "pipe", "noise"}) {
            SCOPED_TRACE(row.place + " is " + what);
            fs::remove_all(parts);
            Restart();
            Await({bodies[0]});
            Restart();
            MakeFile(target, "kept");
            fs::remove_all(row.place);
            if (what == "link")
                fs::create_symlink(row.place == parts ? elsewhere.Path() : target, row.place);
            else if (what == "dangling")
                fs::create_symlink(elsewhere.File("missing"), row.place);
            else if (what == "hard")
                fs::create_hard_link(target, row.place);
            else if (what == "directory")
                fs::create_directories(row.place + "/within");
            else if (what == "pipe")
                ASSERT_EQ(mkfifo(row.place.c_str(), 0600), 0);
            else
                MakeFile(row.place, RandomBytes(300));
            const int status = what == "directory" ? row.ofDirectory : row.status;
            EXPECT_EQ(Decode(bodies[1]), status);
            EXPECT_EQ(ContentOf(target), "kept");
            EXPECT_EQ(FilesBelow(elsewhere.Path()), std::vector<std::string>{"target"});
            if (status == -1) {
                EXPECT_EQ(Decode(bodies[0]), 1); // the search goes on
            }
            if (status != -3)
                ExpectWhole(bytes);
            EXPECT_EQ(Decode(Uuencode("red", "red.jpg")), 1);
            fs::remove(folder.File("red.jpg"));
        }
    }
}

TEST_F(PartFolderTest, SetsAreBounded)
{
    const auto tiny = [](int number, char byte) {
        return Yencode(
            std::string(1, byte), "t" + std::to_string(number), {.part = 2, .total = 2, .partFirst = 1, .whole = "ab"});
    };
    // Of one name: the oldest goes first.
    for (char byte = 'A'; byte <= 'H'; ++byte)
        Await({Without(tiny(1, byte), " crc32=")});
    const std::string oldest = SetPath();
    Age(oldest + ".journal", std::chrono::hours(1));
    Await({Without(tiny(1, 'I'), " crc32=")});
    EXPECT_EQ(Waiting().attachments, 8U);
    EXPECT_EQ(ContentOf(oldest + ".data").back(), 'I');

    // And what nobody sends any more.
    fs::remove_all(parts);
    Await({tiny(1, 'b')});
    for (const int days : {29, 31}) {
        Age(SetPath() + ".journal", std::chrono::hours(24 * days));
        Restart();
        EXPECT_EQ(Waiting(), days < 30 ? WaitingSets(1, 1, 2) : WaitingSets());
    }

    // At all, and in one body.
    fs::remove_all(parts);
    for (int hundred = 0; hundred < 2000; hundred += 100) {
        std::string body;
        for (int number = hundred; number < hundred + 100; ++number)
            body += tiny(number, 'b');
        EXPECT_EQ(Decode(body + (hundred == 0 ? tiny(9999, 'b') : "")), hundred == 0 ? -2 : -1);
    }
    EXPECT_EQ(Waiting().attachments, 2000U);
    Await({"=ybegin part=1 total=2 size=4000000000 name=x\r\n=ypart begin=1 end=3000000000\r\n"});
    EXPECT_EQ(Waiting().attachments, 2000U) << "what is announced only takes no room";
    const auto other
        = [](int number) { return Yencode("a", "t" + std::to_string(number), {.part = 1, .total = 2, .whole = "ab"}); };
    EXPECT_EQ(Decode(other(5)), 1) << "neither does a part of what is there";
    Await({tiny(2000, 'b'), tiny(2001, 'b')});
    EXPECT_EQ(Waiting().attachments, 2000U * 15 / 16);
    EXPECT_EQ(Decode(other(2000)), 1) << "the newest is still there";
    Await({other(2)}); // the oldest is not
}

TEST_F(PartFolderTest, AFullDiskLeavesTheSetAsItWas)
{
    // In the middle of the part, and in that of its record.
    for (const auto& [size, longest] : {std::pair{900'000, 870'000}, {3, 70}}) {
        SCOPED_TRACE(size);
        const std::string attachment = RandomBytes(static_cast<std::size_t>(size));
        const auto bodies = Spread(attachment, 3);
        Await({bodies[0]});
        EXPECT_EQ(Decode(bodies[2], RLIMIT_FSIZE, static_cast<rlim_t>(longest)), -3);
        EXPECT_EQ(Waiting(), (WaitingSets{1, 2, 3}));
        Await({bodies[2]});
        EXPECT_EQ(Decode(bodies[1]), 1);
        ExpectWhole(attachment);
    }
}

// Without descriptors nothing can be told of what is there.
TEST_F(PartFolderTest, WhatCannotBeReadStays)
{
    const auto bodies = Spread(bytes, 3);
    Await({bodies[0]});
    const std::string set = SetPath();
    const int firstFree = dup(0);
    close(firstFree);
    for (rlim_t few = 0; few < 5; ++few) {
        for (const bool isCounted : {true, false}) {
            SCOPED_TRACE(few);
            Restart();
            EXPECT_TRUE(!isCounted || Waiting().attachments == 1);
            (void)Decode(bodies[1], RLIMIT_NOFILE, static_cast<rlim_t>(firstFree) + few);
            EXPECT_TRUE(fs::exists(set + ".journal") && fs::exists(set + ".data"));
            EXPECT_TRUE(few != 0 || fs::exists(parts + "/lock"));
        }
    }
    (void)Decode(bodies[1]);
    EXPECT_EQ(Decode(bodies[2]), 1);
    ExpectWhole(bytes);
}

// As when a program is killed between the last record and the name, or the name cannot be had.
TEST_F(PartFolderTest, WhatIsWholeAndHasNoNameIsTriedOnceInEachSearch)
{
    Await({Spread(bytes, 2)[1]});
    AttachmentSets sets;
    int tries = 0;
    const auto refuse = [&tries](const std::string&, UnnamedFile& file) {
        ++tries;
        file.Leave();
        return false;
    };
    const std::string data = bytes.substr(0, (bytes.size() + 1) / 2);
    AttachmentPart part{bytes.size(), 2, 0, data.size()};
    sets.Open(folder.Path(), "a.bin", part);
    sets.Write(data);
    part.checksum = static_cast<std::uint32_t>(std::stoul(Sum(Spread(bytes, 2)[0], "pcrc32="), nullptr, 16));
    EXPECT_EQ(sets.Keep(part, refuse), Outcome::NotWritten);
    for (int search = 2; search < 4; ++search) {
        sets.Folder.TryAgain();
        sets.FinishWhole(folder.Path(), refuse);
        sets.FinishWhole(folder.Path(), refuse);
        EXPECT_EQ(tries, search);
    }
    EXPECT_EQ(sets.Folder.Waiting(folder.Path()), WaitingSets()) << "it waits for nothing";
    Restart();
    (void)Waiting();
    EXPECT_EQ(Decode("text only\r\n"), 1);
    ExpectWhole(bytes);
    EXPECT_FALSE(fs::exists(parts));
}

// Another program has stopped with the folder in hand.
TEST_F(PartFolderTest, TheFolderIsWaitedForOnce)
{
    Await({Spread(bytes, 2)[0]});
    Restart();
    const int lock = open((parts + "/lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    SetFolder waiting;
    waiting.LongestWait = std::chrono::milliseconds(300);
    const auto timeToEnter = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(waiting.Enter(folder.Path(), SetFolder::Missing::Make));
        return std::chrono::steady_clock::now() - start;
    };
    EXPECT_GE(timeToEnter(), waiting.LongestWait);
    EXPECT_LT(timeToEnter(), waiting.LongestWait / 2);
    EXPECT_EQ(Waiting(), WaitingSets()) << "what is only shown is not waited for";
    close(lock);
    EXPECT_TRUE(waiting.Enter(folder.Path(), SetFolder::Missing::Make));
    EXPECT_EQ(Waiting(), WaitingSets());
    waiting.Leave();
    EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 2}));
}
