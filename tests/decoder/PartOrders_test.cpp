#include "tests/decoder/PartsTest.h"

#include <set>
#include <sys/stat.h>

TEST_F(PartsTest, ThePartThatComesLastCompletesIt)
{
    struct Row {
        const char* what;
        std::vector<std::size_t> order;
        YencDialect dialect = {.total = 1};
    };
    for (const Row& row : {Row{"backwards", {3, 2, 1, 0}}, Row{"the last one first", {3, 0, 2, 1}},
             Row{"doubled", {0, 0, 2, 2, 0, 1, 2, 3}}, Row{"no total", {2, 0, 3, 1}, {.total = 0}},
             Row{"no check sums", {1, 0, 2, 3}, {.checksums = false, .total = 1}},
             Row{"neither", {1, 2, 0, 3}, {.checksums = false, .total = 0}}}) {
        for (const bool restarts : {false, true}) {
            SCOPED_TRACE(row.what);
            const std::vector<std::string> bodies = Spread(bytes, 4, "../a.bin", row.dialect);
            std::set<std::size_t> received;
            for (const std::size_t part : row.order) {
                const bool isLast = received.insert(part).second && received.size() == 4;
                EXPECT_EQ(Decode(bodies[part]), isLast ? 1 : -1);
                if (restarts)
                    Restart();
                EXPECT_EQ(Waiting(), isLast ? WaitingSets() : WaitingSets(1, 4 - received.size(), 4));
            }
            EXPECT_TRUE(Taken("a.bin") == bytes);
            EXPECT_FALSE(fs::exists(parts));
        }
    }
}

TEST_F(PartsTest, ManyInOneBodyBesideWholeOnes)
{
    const auto a = Spread(bytes, 3);
    const auto b = Spread(others, 3, "b.bin");
    Await({a[2] + b[0] + a[0]});
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
}

TEST_F(PartsTest, PostingsOfOneNameAreNotMixed)
{
    // In memory, and too large to be kept there until it is known to which of two sets they belong.
    for (const std::size_t size : {10'007, 3'200'000}) {
        const std::string one = RandomBytes(size);
        const std::string other = RandomBytes(size, 2);
        const YencDialect bare = {.checksums = false, .total = 1};
        const auto a = Spread(one, 3), b = Spread(other, 3);
        const auto aBare = Spread(one, 3, "a.bin", bare), bBare = Spread(other, 3, "a.bin", bare);
        const auto aOfSix = Spread(one, 6, "a.bin", bare);
        const std::string bOfFour = With(bBare[1], "total=3", "total=4");
        // A false beginning of a, which claims a's check sum.
        const std::string false1 = With(b[0], Sum(b[0], " crc32="), Sum(a[0], " crc32="));
        const std::string unproven1 = Without(false1, " pcrc32=");
        struct Row {
            const char* what;
            std::vector<std::string> bodies;
            std::size_t whole;
        };
        for (const Row& row : {Row{"in turn", {a[0], b[0], b[1], a[1], a[1], a[2], b[2]}, 2},
                 Row{"other bytes", {aBare[0], bBare[0], bBare[2], aBare[2], bBare[1], aBare[1]}, 0},
                 Row{"overlapping", {aOfSix[1], bBare[0], aOfSix[0], bBare[1], bBare[2]}, 1},
                 Row{"another total", {aBare[0], bOfFour, aBare[1], aBare[2]}, 1},
                 Row{"another attachment's check sum", {b[0], a[1], a[0], b[2], a[2]}, 1},
                 Row{"a false part before the true one", {false1, a[0], a[1], a[2]}, 1},
                 Row{"an unproven one behind it", {a[0], unproven1, a[1], a[2]}, 1},
                 Row{"an unproven one before it", {unproven1, a[0], a[1], a[2]}, 1},
                 Row{"silent parts behind it", {a[0], false1, aBare[1], aBare[2]}, 1},
                 Row{"silent parts of two with check sums", {a[0], b[0], aBare[1], aBare[2], bBare[1], bBare[2]}, 2}}) {
            SCOPED_TRACE(row.what);
            for (const std::string& body : row.bodies) {
                (void)Decode(body);
                Restart();
            }
            EXPECT_EQ(Files().size(), row.whole);
            for (const std::string& file : Files()) {
                const std::string content = Taken(file);
                EXPECT_TRUE(content == one || content == other) << file << " is mixed";
            }
            fs::remove_all(parts);
        }
    }
}

TEST_F(PartsTest, DamagedPartsAreNotTaken)
{
    const auto bodies = Spread(bytes, 3);
    const std::string sound = bodies[1];
    const std::string sum = "pcrc32=" + Sum(sound, "pcrc32=");
    std::string changed = sound;
    changed[changed.size() / 2] ^= 1;
    const auto spoilt = [&](std::string_view old, std::string_view now) { return With(sound, old, now); };
    for (const auto& [body, status] :
        {std::pair{changed, -2}, {spoilt(sum, "pcrc32=00000001"), -2}, {spoilt(sum, "pcrc32=x"), -2},
            {spoilt(" crc32=", " crc32=x"), -2}, {spoilt("begin=3337", "begin=3336"), -2},
            {spoilt("begin=3337", "begin=3338"), -2}, {spoilt("begin=3337", "begin=6673"), -2},
            {spoilt("begin=3337", "begin=0"), -2}, {spoilt("end=6672", "end=10008"), -2},
            {spoilt("=yend size=3336", "=yend size=3335"), -2}, {spoilt("size=3336 part=2", "size=3336 part=3"), -2},
            {spoilt("part=2", "part=4"), -2}, {spoilt("part=2", "part=0"), -2}, {sound.substr(0, 2000), -1},
            {spoilt("=ypart", "=xpart"), -1}, {spoilt("size=10007", "size=4294967297"), -2},
            {spoilt("total=3", "total=20001"), -2}, {spoilt("a.bin", std::string(1025, 'a')), -2}}) {
        SCOPED_TRACE(body.substr(0, 100) + body.substr(body.size() - 60));
        EXPECT_EQ(Decode(body), status);
        EXPECT_FALSE(fs::exists(parts));
        Await({bodies[0]});
        EXPECT_EQ(Decode(body), status);
        EXPECT_EQ(Waiting(), (WaitingSets{1, 2, 3}));
        Await({bodies[2]});
        EXPECT_EQ(Decode(sound), 1);
        ExpectWhole(bytes);
    }
    // A check sum that is the part's own says nothing of the whole.
    for (const std::string& body : bodies)
        (void)Decode(With(body, Sum(body, " crc32="), Sum(body, "pcrc32=")));
    ExpectWhole(bytes);
}

TEST_F(PartsTest, TheWholeIsCheckedToo)
{
    const auto sound = Spread(bytes, 3);
    std::string changed = bytes;
    changed[5000] ^= 1;
    const auto wrong = Spread(changed, 3);
    const std::string unproven
        = Without(With(wrong[1], Sum(wrong[1], " crc32="), Sum(sound[1], " crc32=")), " pcrc32=");
    const TemporaryFolder elsewhere;
    MakeFile(elsewhere.File("kept"), "kept");
    // What a stranger put where the journal is written anew: the set stays as it was, if that cannot be removed.
    const std::string replacement = parts + "/.replacement.new";
    for (const std::string what : {"pipe", "link", "directory"}) {
        SCOPED_TRACE(what);
        const std::string body = what == "pipe" ? Without(wrong[1], " crc32=") : unproven;
        Await({body, sound[0]});
        if (what == "pipe")
            ASSERT_EQ(mkfifo(replacement.c_str(), 0600), 0);
        else if (what == "link")
            fs::create_hard_link(elsewhere.File("kept"), replacement);
        else
            fs::create_directories(replacement + "/within");
        EXPECT_EQ(Decode(sound[2]), -2);
        EXPECT_EQ(ContentOf(elsewhere.File("kept")), "kept");
        if (what == "directory") {
            fs::remove_all(replacement);
            Restart();
            EXPECT_EQ(Waiting(), WaitingSets()) << "it is whole still";
            EXPECT_EQ(Decode("text\r\n"), 0);
        }
        EXPECT_EQ(Waiting(), (WaitingSets{1, 1, 3})) << "those that proved themselves and told the check sum stay";
        EXPECT_EQ(Decode(sound[1]), 1);
        ExpectWhole(bytes);
    }
    // What all parts agree on is not true.
    const auto lying = [&](std::size_t part) { return With(sound[part], Sum(sound[part], " crc32="), "12345678"); };
    Await({lying(0), lying(1)});
    EXPECT_EQ(Decode(lying(2)), -2);
    EXPECT_TRUE(Files().empty());
    EXPECT_FALSE(fs::exists(parts));
}
