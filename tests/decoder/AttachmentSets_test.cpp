#include "decoder/AttachmentSets.h"
#include "demo/sample/Encoders.h"
#include "tests/decoder/DecoderTest.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <map>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

namespace {

bool diskKnowsLocks = true;

}

// As network disks have it that know none.
extern "C" int flock(int file, int operation) noexcept
{
    if (diskKnowsLocks)
        return static_cast<int>(syscall(SYS_flock, file, operation));
    errno = ENOLCK;
    return -1;
}

namespace {

namespace fs = std::filesystem;

const std::string setFolder = ".tamarack-parts/";

std::vector<std::string> Spread(std::string_view bytes, std::size_t count, const std::string& name = "a.bin",
    const YencDialect& dialect = {.total = 1})
{
    std::vector<std::string> bodies = YencodeParts(bytes, name, count, dialect);
    for (std::string& body : bodies)
        body = DotStuff(body);
    return bodies;
}

std::string With(std::string text, std::string_view old, std::string_view now)
{
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return text.replace(at, old.size(), now);
}

std::uint32_t PartChecksum(const std::string& body)
{
    return static_cast<std::uint32_t>(std::stoul(body.substr(body.find("pcrc32=") + 7, 8), nullptr, 16));
}

class AttachmentSetsTest : public DecoderTest {
protected:
    void Restart() { decoder = AttachmentDecoder(); }

    WaitingSets Waiting() { return decoder.Waiting(folder.Path()); }

    // The only set's, without the ending.
    std::string SetPath() const
    {
        for (const std::string& file : FilesBelow(folder.File(setFolder))) {
            if (file.ends_with(".journal"))
                return folder.File(setFolder + file.substr(0, file.size() - 8));
        }
        return {};
    }

    bool FolderIsThere() const { return fs::exists(fs::symlink_status(folder.File(setFolder.substr(0, 15)))); }

    void ExpectWhole(const std::string& posted, const std::string& name = "a.bin")
    {
        EXPECT_EQ(decoder.ImageFilename(), name);
        EXPECT_TRUE(Taken(name) == posted);
        EXPECT_TRUE(Files().empty());
    }

    const std::string bytes = RandomBytes(10'007);
    const std::string others = RandomBytes(10'007, 2);
};

TEST_F(AttachmentSetsTest, ThePartThatComesLastCompletesIt)
{
    struct Row {
        const char* what;
        std::vector<std::size_t> order;
        YencDialect dialect = {.total = 1};
    };
    for (const Row& row :
        {Row{"in their order", {0, 1, 2, 3}}, Row{"backwards", {3, 2, 1, 0}}, Row{"the last one first", {3, 0, 2, 1}},
            Row{"doubled", {0, 0, 2, 2, 0, 1, 2, 3}}, Row{"no total", {2, 0, 3, 1}, {.total = 0}},
            Row{"no check sums", {1, 0, 2, 3}, {.checksums = false, .total = 1}},
            Row{"neither", {1, 2, 0, 3}, {.checksums = false, .total = 0}}}) {
        for (const bool restarts : {false, true}) {
            SCOPED_TRACE(row.what);
            const std::vector<std::string> bodies = Spread(bytes, 4, "../a.bin", row.dialect);
            for (std::size_t i = 0; i < row.order.size(); ++i) {
                const bool isLast = i + 1 == row.order.size();
                EXPECT_EQ(Decode(bodies[row.order[i]]), isLast ? 1 : -1);
                if (restarts)
                    Restart();
                EXPECT_EQ(Waiting().attachments, isLast ? 0U : 1U);
                EXPECT_EQ(Waiting().articles, isLast ? 0U : 4U);
            }
            EXPECT_TRUE(Taken("a.bin") == bytes);
            EXPECT_FALSE(FolderIsThere());
        }
    }
}

TEST_F(AttachmentSetsTest, ManyInOneBodyBesideWholeOnes)
{
    const auto a = Spread(bytes, 3, "a.bin");
    const auto b = Spread(others, 3, "b.bin");
    EXPECT_EQ(Decode(a[2] + b[0] + a[0]), -1);
    EXPECT_EQ(Waiting(), (WaitingSets{2, 3, 6}));
    EXPECT_EQ(Decode(b[1] + Uuencode("red", "red.jpg") + a[1] + "text\r\n" + b[2]), 3);
    EXPECT_EQ(decoder.StoredNames(), (std::vector<std::string>{"red.jpg", "a.bin", "b.bin"}));
    EXPECT_TRUE(Taken("a.bin") == bytes);
    EXPECT_TRUE(Content("b.bin") == others);
    // And again: an equal file counts as stored, another one stays.
    MakeFile(folder.File("a.bin"), "mine");
    EXPECT_EQ(Decode(a[0] + a[1] + a[2] + b[0] + b[1] + b[2]), 2);
    EXPECT_EQ(decoder.StoredNames(), (std::vector<std::string>{"a (2).bin", "b.bin"}));
    EXPECT_EQ(decoder.FoundNames(), std::vector<std::string>{"b.bin"});
    EXPECT_EQ(Content("a.bin"), "mine");
    EXPECT_FALSE(FolderIsThere());
}

TEST_F(AttachmentSetsTest, PostingsOfOneNameAreNotMixed)
{
    const auto a = Spread(bytes, 3);
    const auto b = Spread(others, 3);
    const auto aBare = Spread(bytes, 3, "a.bin", {.checksums = false, .total = 1});
    const auto bBare = Spread(others, 3, "a.bin", {.checksums = false, .total = 1});
    const auto aOfSix = Spread(bytes, 6, "a.bin", {.checksums = false, .total = 1});
    const std::string bOfFour = With(bBare[1], "total=3", "total=4");
    // A false beginning of a, which claims a's check sum.
    const auto checksumOf = [](const std::string& body) { return body.substr(body.find(" crc32=") + 7, 8); };
    const std::string false1 = With(b[0], checksumOf(b[0]), checksumOf(a[0]));
    std::string unprovenFalse1 = false1;
    unprovenFalse1.erase(unprovenFalse1.find(" pcrc32="), 16);
    struct Row {
        const char* what;
        std::vector<std::string> bodies;
        std::size_t whole;
    };
    for (const Row& row : {Row{"in turn", {a[0], b[0], b[1], a[1], a[2], b[2]}, 2},
             Row{"one after the other's beginning", {a[0], a[2], b[1], b[0], b[2], a[1]}, 2},
             Row{"other bytes", {aBare[0], bBare[0], bBare[2], aBare[2], bBare[1], aBare[1]}, 0},
             Row{"other bytes, the first incomplete", {aBare[0], aBare[2], bBare[0], bBare[2], aBare[1]}, 0},
             Row{"overlapping", {aOfSix[1], bBare[0], aOfSix[0], bBare[1], bBare[2]}, 1},
             Row{"another total", {aBare[0], bOfFour, aBare[1], aBare[2]}, 1},
             Row{"another attachment's check sum", {b[0], a[1], a[0], b[2], a[2]}, 1},
             Row{"a false part behind the true one", {a[0], false1, a[1], a[2]}, 1},
             Row{"a false part before the true one", {false1, a[0], a[1], a[2]}, 1},
             Row{"an unproven one behind it", {a[0], unprovenFalse1, a[1], a[2]}, 1},
             Row{"an unproven one before it", {unprovenFalse1, a[0], a[1], a[2]}, 1},
             Row{"silent parts behind it", {a[0], false1, aBare[1], aBare[2]}, 1},
             Row{"silent parts of two with check sums", {a[0], b[0], aBare[1], aBare[2], bBare[1], bBare[2]}, 2}}) {
        SCOPED_TRACE(row.what);
        std::size_t whole = 0;
        for (const std::string& body : row.bodies) {
            whole += Decode(body) > 0 ? 1 : 0;
            Restart();
        }
        EXPECT_EQ(whole, row.whole);
        EXPECT_EQ(Files().size(), row.whole);
        for (const std::string& file : Files()) {
            const std::string content = Taken(file);
            EXPECT_TRUE(content == bytes || content == others) << file << " is mixed";
        }
        fs::remove_all(folder.File(setFolder));
    }
}

// Too large to be kept in memory until it is known to which of two sets they belong.
TEST_F(AttachmentSetsTest, LargePartsOfTwoPostings)
{
    const std::string large = RandomBytes(4'500'000, 3);
    const std::string largeOthers = RandomBytes(4'500'000, 4);
    const auto a = Spread(large, 3);
    const auto b = Spread(largeOthers, 3);
    for (const std::string& body : {a[0], b[0], b[1], a[1], a[1]})
        EXPECT_EQ(Decode(body), -1);
    EXPECT_EQ(Decode(a[2]), 1);
    ExpectWhole(large);
    EXPECT_EQ(Decode(b[2]), 1);
    ExpectWhole(largeOthers);
    EXPECT_FALSE(FolderIsThere());
}

TEST_F(AttachmentSetsTest, DamagedPartsAreNotTaken)
{
    const auto bodies = Spread(bytes, 3);
    const std::string sound = bodies[1];
    const std::string sum = sound.substr(sound.find("pcrc32=") + 7, 8);
    std::string changed = sound;
    changed[changed.size() / 2] ^= 1;
    struct Row {
        const char* what;
        std::string body;
        int status;
    };
    for (const Row& row : {
             Row{"a byte", changed, -2},
             Row{"the check sum", With(sound, "pcrc32=" + sum, "pcrc32=00000001"), -2},
             Row{"no number", With(sound, "pcrc32=" + sum, "pcrc32=x"), -2},
             Row{"the whole's check sum is no number", With(sound, " crc32=", " crc32=x"), -2},
             Row{"a larger range", With(sound, "begin=3337", "begin=3336"), -2},
             Row{"a smaller range", With(sound, "begin=3337", "begin=3338"), -2},
             Row{"an empty range", With(sound, "begin=3337", "begin=6673"), -2},
             Row{"from nowhere", With(sound, "begin=3337", "begin=0"), -2},
             Row{"beyond the end", With(sound, "end=6672", "end=10008"), -2},
             Row{"another size at the end", With(sound, "=yend size=3336", "=yend size=3335"), -2},
             Row{"another part at the end", With(sound, "size=3336 part=2", "size=3336 part=3"), -2},
             Row{"part 4 of 3", With(sound, "part=2", "part=4"), -2},
             Row{"part 0", With(sound, "part=2", "part=0"), -2},
             Row{"cut off", sound.substr(0, 2000), -1},
             Row{"without its range", With(sound, "=ypart", "=xpart"), -1},
             Row{"too large", With(sound, "size=10007", "size=4294967297"), -2},
             Row{"too many", With(sound, "total=3", "total=20001"), -2},
             Row{"a long name", With(sound, "a.bin", std::string(1025, 'a')), -2},
         }) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Decode(row.body), row.status);
        EXPECT_FALSE(FolderIsThere());
        EXPECT_EQ(Decode(bodies[0]), -1);
        EXPECT_EQ(Decode(row.body), row.status);
        EXPECT_EQ(Waiting(), (WaitingSets{1, 2, 3}));
        EXPECT_EQ(Decode(bodies[2]), -1);
        EXPECT_EQ(Decode(sound), 1);
        ExpectWhole(bytes);
    }
    // A check sum that is the part's own says nothing of the whole.
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t at = bodies[i].find(" pcrc32=");
        EXPECT_EQ(Decode(bodies[i].substr(0, at) + " crc32=" + bodies[i].substr(at + 8, 8) + "\r\n"), i < 2 ? -1 : 1);
    }
    ExpectWhole(bytes);
}

// A kill can leave any beginning of the last record, and a disk without power anything.
TEST_F(AttachmentSetsTest, WhateverHappensToItsFilesNoWrongFileAppears)
{
    const auto bodies = Spread(bytes, 4);
    const auto completes = [&](const char* what, const std::function<void(const std::string& path)>& spoil) {
        SCOPED_TRACE(what);
        for (const std::size_t i : {2U, 0U, 3U})
            EXPECT_EQ(Decode(bodies[i]), -1);
        spoil(SetPath());
        Restart();
        // All that is gone comes again.
        int whole = 0;
        for (const std::size_t i : {1U, 0U, 2U, 3U}) {
            if (Decode(bodies[i]) > 0 && ++whole == 1)
                ExpectWhole(bytes);
        }
        EXPECT_EQ(whole, 1) << what;
        fs::remove_all(folder.File(setFolder));
    };
    completes("nothing", [](const std::string&) {});
    std::string journal;
    completes("read", [&journal](const std::string& path) { journal = ContentOf(path + ".journal"); });
    EXPECT_EQ(journal.size(), 29U + 3 * 32);
    for (std::size_t size = 0; size < journal.size(); size += size < 29 ? 7 : 1)
        completes("cut off", [&](const std::string& path) { fs::resize_file(path + ".journal", size); });
    for (std::size_t at = 0; at < journal.size(); at += 3) {
        completes("changed", [&](const std::string& path) {
            std::string spoilt = journal;
            spoilt[at] = static_cast<char>(~spoilt[at]);
            MakeFile(path + ".journal", spoilt);
        });
    }
    completes("behind it", [&](const std::string& path) { MakeFile(path + ".journal", journal + "noise"); });
    completes("noise", [](const std::string& path) { MakeFile(path + ".journal", RandomBytes(5000)); });
    completes("no journal", [](const std::string& path) { fs::remove(path + ".journal"); });
    completes("no data", [](const std::string& path) { fs::remove(path + ".data"); });
    completes("data cut off", [](const std::string& path) { fs::resize_file(path + ".data", 5000); });
    completes("data too long", [](const std::string& path) { fs::resize_file(path + ".data", 50'000); });
    completes("a byte of the data", [](const std::string& path) {
        std::string spoilt = ContentOf(path + ".data");
        spoilt[9000] ^= 1;
        MakeFile(path + ".data", spoilt);
    });

    // One part only is waited for again.
    for (const std::size_t i : {0U, 2U, 3U})
        EXPECT_EQ(Decode(bodies[i]), -1);
    fs::resize_file(SetPath() + ".data", 9000);
    EXPECT_EQ(Decode(bodies[1]), -1);
    EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 4}));
    EXPECT_EQ(Decode(bodies[3]), 1);
    ExpectWhole(bytes);
    EXPECT_FALSE(FolderIsThere());
}

TEST_F(AttachmentSetsTest, TheWholeIsCheckedToo)
{
    const auto sound = Spread(bytes, 3);
    std::string wrong = bytes;
    wrong[5000] ^= 1;
    std::string unproven = Spread(wrong, 3, "a.bin", {.checksums = false, .total = 1})[1];
    unproven.insert(unproven.size() - 2, " crc32=" + sound[1].substr(sound[1].find(" crc32=") + 7, 8));
    std::string silent = Spread(wrong, 3)[1];
    silent.erase(silent.find(" crc32="), 15);
    const TemporaryFolder elsewhere;
    const std::string kept = elsewhere.File("kept");
    MakeFile(kept, "kept");
    for (const std::string& body : {unproven, silent}) {
        EXPECT_EQ(Decode(body), -1);
        const std::string replacement = folder.File(setFolder + ".replacement.new");
        if (body == silent)
            ASSERT_EQ(mkfifo(replacement.c_str(), 0600), 0);
        else
            fs::create_hard_link(kept, replacement);
        EXPECT_EQ(Decode(sound[0]), -1);
        EXPECT_EQ(Decode(sound[2]), -2);
        EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 3})) << "those that proved themselves and told the check sum stay";
        EXPECT_EQ(ContentOf(kept), "kept");
        EXPECT_EQ(Decode(sound[1]), 1);
        ExpectWhole(bytes);
    }
    // The set stays if the journal cannot be written anew.
    EXPECT_EQ(Decode(unproven), -1);
    EXPECT_EQ(Decode(sound[0]), -1);
    fs::create_directories(folder.File(setFolder + ".replacement.new/within"));
    EXPECT_EQ(Decode(sound[2]), -2);
    fs::remove_all(folder.File(setFolder + ".replacement.new"));
    Restart();
    EXPECT_EQ(Waiting(), WaitingSets());
    EXPECT_EQ(Decode("text\r\n"), 0);
    EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 3}));
    EXPECT_EQ(Decode(sound[1]), 1);
    ExpectWhole(bytes);
    // What all parts agree on is not true.
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t at = sound[i].find(" crc32=");
        EXPECT_EQ(Decode(sound[i].substr(0, at) + " crc32=12345678\r\n"), i < 2 ? -1 : -2);
    }
    EXPECT_TRUE(Files().empty());
    EXPECT_FALSE(FolderIsThere());
}

TEST_F(AttachmentSetsTest, NothingOutsideTheFolderIsTouched)
{
    const TemporaryFolder elsewhere;
    const std::string target = elsewhere.File("target");
    const auto bodies = Spread(bytes, 2);
    EXPECT_EQ(Decode(bodies[0]), -1);
    const std::string set = SetPath();
    const std::string parts = folder.File(setFolder.substr(0, 15));
    struct Row {
        const char* what;
        std::string place;
        int status; // of the second part
    };
    for (const Row& row : {Row{"folder", parts, -3}, Row{"journal", set + ".journal", -1},
             Row{"data", set + ".data", -1}, Row{"lock", parts + "/lock", 1}}) {
        for (const std::string what : {"link", "dangling", "hard", "directory", "pipe", "noise"}) {
            SCOPED_TRACE(row.what + (" is " + what));
            fs::remove_all(parts);
            Restart();
            EXPECT_EQ(Decode(bodies[0]), -1);
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
            int status = row.status;
            if (row.place == parts && what == "directory")
                status = -1;
            else if (what == "directory" && status == 1)
                status = -3;
            EXPECT_EQ(Decode(bodies[1]), status);
            EXPECT_EQ(ContentOf(target), "kept");
            EXPECT_EQ(FilesBelow(elsewhere.Path()), std::vector<std::string>{"target"});
            if (status == -1) {
                EXPECT_EQ(Decode(bodies[0]), 1); // the search goes on
                ExpectWhole(bytes);
            }
            EXPECT_EQ(Decode(Uuencode("red", "red.jpg")), 1);
            fs::remove(folder.File("red.jpg"));
            fs::remove(folder.File("a.bin"));
        }
    }
}

TEST_F(AttachmentSetsTest, SetsAreBounded)
{
    const auto tiny = [](int number, char byte) {
        return Yencode(
            std::string(1, byte), "t" + std::to_string(number), {.part = 2, .total = 2, .partFirst = 1, .whole = "ab"});
    };
    // Of one name: the oldest goes first.
    for (char byte = 'A'; byte < 'M'; ++byte) {
        std::string body = tiny(1, byte);
        EXPECT_EQ(Decode(body.substr(0, body.find(" crc32=")) + "\r\n"), -1);
    }
    EXPECT_EQ(Waiting().attachments, 8U);

    // At all.
    std::string body;
    for (int number = 0; number < 150; ++number)
        body += tiny(number, 'b');
    EXPECT_EQ(Decode(body), -2) << "more than a hundred parts in a body";
    EXPECT_LE(Waiting().attachments, 108U);
    for (int hundred = 1; hundred <= 21; ++hundred) {
        body.clear();
        for (int number = 0; number < 100; ++number)
            body += tiny(100 * hundred + number, 'b');
        EXPECT_EQ(Decode(body), -1);
    }
    EXPECT_LE(Waiting().attachments, 2000U);
    EXPECT_GT(Waiting().attachments, 1800U);
    for (std::uint64_t number = Waiting().attachments; number < 2000; ++number)
        EXPECT_EQ(Decode(tiny(static_cast<int>(3000 + number), 'b')), -1);
    EXPECT_EQ(Waiting().attachments, 2000U);
    EXPECT_EQ(Decode("=ybegin part=1 total=2 size=4000000000 name=x\r\n=ypart begin=1 end=3000000000\r\n"), -1);
    EXPECT_EQ(Waiting().attachments, 2000U) << "what is announced only takes no room";
    // Neither does a part of what is there.
    EXPECT_EQ(Decode(Yencode("a", "t2199", {.part = 1, .total = 2, .whole = "ab"})), 1) << "the newest is still there";
    EXPECT_EQ(Waiting().attachments, 1999U);
    EXPECT_EQ(Decode(Yencode("a", "t1", {.part = 1, .total = 2, .whole = "ab"})), -1) << "the oldest is not";
}

TEST_F(AttachmentSetsTest, AFullDiskLeavesTheSetAsItWas)
{
    struct Row {
        const char* what;
        std::size_t size;
        rlim_t limit; // of a file
    };
    for (const Row& row : {Row{"in the middle of the part", 900'000, 870'000}, Row{"in that of its record", 3, 70}}) {
        SCOPED_TRACE(row.what);
        const std::string large = RandomBytes(row.size);
        const auto bodies = Spread(large, 3);
        EXPECT_EQ(Decode(bodies[0]), -1);
        MakeFile(folder.File(bodyName), bodies[2]);
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit old = {};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
        const rlimit small{row.limit, old.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        decoder.SetDecodeFilename(folder.File(bodyName));
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
        EXPECT_EQ(decoder.DecodeStatus(), -3);
        EXPECT_EQ(Waiting(), (WaitingSets{1, 2, 3}));
        EXPECT_EQ(Decode(bodies[2]), -1);
        EXPECT_EQ(Decode(bodies[1]), 1);
        ExpectWhole(large);
    }
}

TEST_F(AttachmentSetsTest, WhatCanHaveNoNameIsTriedOnceInEachSearch)
{
    const auto bodies = Spread(bytes, 2);
    EXPECT_EQ(Decode(bodies[1]), -1);
    AttachmentSets sets;
    const std::string first = bytes.substr(0, (bytes.size() + 1) / 2);
    int tries = 0;
    const auto refuse = [&tries](const std::string&, UnnamedFile& file) {
        ++tries;
        file.Leave();
        return false;
    };
    sets.Open(folder.Path(), "a.bin", {bytes.size(), 2, 0, first.size()});
    sets.Write(first);
    EXPECT_EQ(sets.Keep({PartChecksum(bodies[0]), true, {}}, refuse), Outcome::NotWritten);
    for (int search = 2; search < 4; ++search) {
        sets.BeginSearch();
        sets.FinishWhole(folder.Path(), refuse);
        sets.FinishWhole(folder.Path(), refuse);
        EXPECT_EQ(tries, search);
    }
    EXPECT_EQ(sets.Waiting(folder.Path()), WaitingSets());
    Restart();
    (void)Waiting();
    EXPECT_EQ(Decode("text only\r\n"), 1);
    ExpectWhole(bytes);
}

// Without descriptors nothing can be told of what is there.
TEST_F(AttachmentSetsTest, WhatCannotBeReadStays)
{
    const auto bodies = Spread(bytes, 3);
    EXPECT_EQ(Decode(bodies[0]), -1);
    rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
    const int firstFree = dup(0);
    close(firstFree);
    MakeFile(folder.File(bodyName), bodies[1]);
    const std::string set = SetPath();
    for (rlim_t free = 0; free < 5; ++free) {
        SCOPED_TRACE(free);
        for (const bool counts : {true, false}) {
            const rlimit few{static_cast<rlim_t>(firstFree) + free, old.rlim_max};
            Restart();
            ASSERT_TRUE(counts || Waiting().attachments == 1);
            ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
            if (counts)
                (void)Waiting();
            else
                decoder.SetDecodeFilename(folder.File(bodyName));
            setrlimit(RLIMIT_NOFILE, &old);
            EXPECT_TRUE(fs::exists(set + ".journal") && fs::exists(set + ".data"));
            EXPECT_TRUE(free != 0 || fs::exists(folder.File(setFolder + "lock")));
        }
    }
    Restart();
    EXPECT_GE(Waiting().attachments, 1U);
    (void)Decode(bodies[1]);
    EXPECT_EQ(Decode(bodies[2]), 1);
    ExpectWhole(bytes);
}

TEST_F(AttachmentSetsTest, OldSetsGoAndWholeOnesAreFinished)
{
    const auto bodies = Spread(bytes, 2);
    const auto agedBy = [this](int days) {
        const utimbuf times{0, time(nullptr) - days * 24 * 60 * 60};
        EXPECT_EQ(utime((SetPath() + ".journal").c_str(), &times), 0);
        Restart();
    };
    EXPECT_EQ(Decode(bodies[0]), -1);
    agedBy(29);
    EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 2}));
    agedBy(31);
    EXPECT_EQ(Waiting(), WaitingSets());
    EXPECT_FALSE(FolderIsThere());
    EXPECT_EQ(Decode(bodies[1]), -1);

    // Killed between the last record and the name.
    SetJournal journal = SetJournal::Read(ContentOf(SetPath() + ".journal")).value();
    MakeFile(SetPath() + ".data", bytes);
    ReceivedPart first = journal.Parts().front();
    first.begin = 0;
    first.size = journal.Parts().front().begin;
    first.checksum = PartChecksum(bodies[0]);
    journal.Add(first);
    MakeFile(SetPath() + ".journal", journal.Bytes());
    Restart();
    EXPECT_EQ(Waiting(), WaitingSets()) << "it waits for nothing";
    EXPECT_EQ(Decode("text only\r\n"), 1);
    ExpectWhole(bytes);
    EXPECT_FALSE(FolderIsThere());
}

// Another program has stopped with the folder in hand.
TEST_F(AttachmentSetsTest, TheFolderIsWaitedForOnce)
{
    const auto bodies = Spread(bytes, 3);
    EXPECT_EQ(Decode(bodies[0]), -1);
    Restart();
    const int lock = open(folder.File(setFolder + "lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    EXPECT_EQ(Waiting(), WaitingSets());
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(Decode(bodies[1]), -3);
    EXPECT_GT(Clock::now() - start, std::chrono::seconds(9));
    const auto next = Clock::now();
    EXPECT_EQ(Decode(bodies[1] + bodies[2]), -3);
    EXPECT_LT(Clock::now() - next, std::chrono::seconds(2));
    close(lock);
    EXPECT_EQ(Waiting(), (WaitingSets{1, 2, 3}));
    EXPECT_EQ(Decode(bodies[1] + bodies[2]), 1);
    ExpectWhole(bytes);
}

TEST_F(AttachmentSetsTest, WhereNobodyGetsALockNothingOfAnotherProgramIsTouched)
{
    const auto bodies = Spread(bytes, 3);
    EXPECT_EQ(Decode(bodies[0]), -1);
    const std::string set = SetPath();
    const auto begin = [this, &bodies](AttachmentSets& sets, std::size_t part) {
        const std::size_t size = (bytes.size() + 2) / 3;
        const std::string data = bytes.substr(part * size, size);
        sets.Open(folder.Path(), "a.bin", {bytes.size(), 3, part * size, data.size()});
        sets.Write(data);
        return PartEnd{PartChecksum(bodies[part]), true, {}};
    };
    const auto refuse = [](const std::string&, UnnamedFile&) { return false; };
    diskKnowsLocks = false;
    AttachmentSets one;
    AttachmentSets other;
    const PartEnd oneEnd = begin(one, 1);
    const PartEnd otherEnd = begin(other, 2);
    EXPECT_EQ(other.Keep(otherEnd, refuse), Outcome::Part);
    EXPECT_EQ(one.Keep(oneEnd, refuse), Outcome::NotWritten) << "its record would be in place of the other's";
    fs::remove(set + ".journal"); // not written yet
    const std::string data = ContentOf(set + ".data");
    Restart();
    EXPECT_EQ(Decode(bodies[0]), -1);
    EXPECT_TRUE(ContentOf(set + ".data") == data);
    EXPECT_NE(SetPath(), set);
    EXPECT_EQ(Decode(bodies[1] + bodies[2]), 1);
    diskKnowsLocks = true;
    ExpectWhole(bytes);
}

// Each of two programs gets all parts, in an order of its own.
TEST_F(AttachmentSetsTest, TwoProgramsStoreIntoOneDirectory)
{
    std::map<std::string, std::string> attachments;
    std::vector<std::string> bodies;
    for (unsigned number = 0; number < 12; ++number) {
        const std::string name = std::to_string(number) + ".bin";
        attachments[name] = RandomBytes(40'000, number);
        for (const std::string& body : Spread(attachments[name], 5, name))
            bodies.push_back(body);
    }
    std::vector<pid_t> programs;
    for (unsigned number = 0; number < 2; ++number) {
        programs.push_back(fork());
        if (programs.back() != 0)
            continue;
        std::shuffle(bodies.begin(), bodies.end(), std::mt19937(number));
        const std::string body = folder.File("article" + std::to_string(number) + ".uue");
        int status = 0;
        for (const std::string& text : bodies) {
            MakeFile(body, text);
            decoder.SetDecodeFilename(body);
            status = std::min(status, decoder.DecodeStatus());
        }
        std::remove(body.c_str());
        std::_Exit(status == -1 ? 0 : 1);
    }
    for (const pid_t program : programs) {
        int status = -1;
        EXPECT_EQ(waitpid(program, &status, 0), program);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(Files().size(), attachments.size());
    for (const auto& [name, content] : attachments)
        EXPECT_TRUE(Content(name) == content) << name;
}

}
