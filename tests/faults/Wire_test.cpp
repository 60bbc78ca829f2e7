#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/FaultProxy.h"
#include "tests/support/ResidentMemory.h"

#include <QElapsedTimer>
#include <QTimer>

#include <malloc.h>

namespace {

using namespace std::chrono_literals;

class WireTest : public ProgramTest {
protected:
    WireTest()
        : server({GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")}),
            GroupOf("alt.boats", 1, {Uuencode("white", "white.jpg")})})
        , proxy(server.Port())
    {
    }

    void StartSearches()
    {
        Start({"alt.kites", "alt.boats"}, proxy.Port());
        Check("chkGroupSubDir", false);
    }

    // A search on a new connection in which something goes wrong. When nothing has come any more for a while, the user
    // stops it. Gives the longest time that an event had to wait meanwhile.
    std::chrono::milliseconds SearchWith(const Fault& fault)
    {
        Forget();
        proxy.SetFault(fault);
        program->MainWindow().cboNewsServer.Click(); // ends the session
        // Of a status line that comes in pieces only the first piece is judged. Any other text may come so.
        const bool mayHang = fault.kind != Fault::Kind::Split || proxy.IsInStatusLine(fault.at);
        QTimer heart;
        QElapsedTimer beat;
        qint64 longest = 0;
        int idle = 0;
        std::uint64_t seen = 0;
        QObject::connect(&heart, &QTimer::timeout, [&] {
            longest = std::max(longest, beat.restart());
            idle = proxy.BytesPassed() == seen ? idle + 1 : 0;
            seen = proxy.BytesPassed();
            if (idle > 10 && ((proxy.HasStruck() && mayHang) || idle > 2000))
                Click("cmdStop");
        });
        beat.start();
        heart.start(2ms);
        Click("cmdFindNow");
        EXPECT_TRUE(proxy.HasStruck() || fault.kind == Fault::Kind::None);
        EXPECT_EQ(CaptionOf("frmTamarack"), frmTamarack::idleCaption);
        EXPECT_TRUE(IsEnabled("cmdFindNow"));
        return std::chrono::milliseconds(longest);
    }

    std::vector<std::string> Stored() const
    {
        std::vector<std::string> stored;
        for (const std::string& name : FilesBelow(destination))
            stored.push_back(name + "=" + ContentOf(destination + name));
        return stored;
    }

    void ExpectWholeFiles() const
    {
        for (const std::string& file : Stored())
            EXPECT_THAT(all, testing::Contains(file));
        EXPECT_EQ(ContentOf(PointerFile()).size() % 84, 0U);
    }

    // All that is there is whole, and the next search goes on.
    void ExpectNothingLost()
    {
        ExpectWholeFiles();
        proxy.SetFault({});
        program->MainWindow().cboNewsServer.Click(); // the connection may have stalled without anybody waiting for it
        desktop.boxes.clear();
        Click("cmdFindNow");
        EXPECT_TRUE(desktop.boxes.empty());
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(3, "alt.kites") + PointerRecord(2, "alt.boats"));
    }

    static long KilobytesInUse()
    {
        malloc_trim(0);
        return ResidentKilobytes();
    }

    const std::vector<std::string> all{"blue.jpg=blue", "red.jpg=red", "white.jpg=white"};
    SampleServer server;
    FaultProxy proxy;
};

}

TEST_F(WireTest, EveryReplySplitAtEveryByte)
{
    StartSearches();
    SearchWith({});
    EXPECT_EQ(Stored(), all);
    const std::uint64_t bytes = proxy.BytesPassed();
    ASSERT_GT(bytes, 500U);
    for (std::uint64_t at = 1; at < bytes; ++at) {
        SCOPED_TRACE("split at " + std::to_string(at));
        SearchWith({Fault::Kind::Split, at});
        if (proxy.IsInStatusLine(at))
            ExpectWholeFiles();
        else
            EXPECT_EQ(Stored(), all);
        if (HasFailure())
            return;
    }
}

TEST_F(WireTest, EveryReplyCutOff)
{
    StartSearches();
    SearchWith({});
    const std::uint64_t bytes = proxy.BytesPassed();
    int number = 0;
    for (std::uint64_t at = 0; at < bytes; at += 5) {
        const Fault::Kind kinds[] = {Fault::Kind::Close, Fault::Kind::Reset, Fault::Kind::Stall};
        SCOPED_TRACE("fault " + std::to_string(number % 3) + " at " + std::to_string(at));
        SearchWith({kinds[number++ % 3], at});
        ExpectNothingLost();
        if (HasFailure())
            return;
    }
}

// A connection that is lost while no reply is waited for ends the search by itself.
TEST_F(WireTest, LostBetweenTwoCommands)
{
    StartSearches();
    SearchWith({});
    const std::vector<std::uint64_t> ends = proxy.ReplyEnds(); // greeting, group, next, ..., next at the group's end
    ASSERT_EQ(ends.size(), 14U);
    desktop.whileAsleep = [](std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); };
    for (const auto& [reply, after] : {std::pair{1, 0ms}, {2, 0ms}, {3, 0ms}, {8, 50ms}, {8, 700ms}, {8, 1300ms}}) {
        SCOPED_TRACE("reply " + std::to_string(reply) + ", lost after " + std::to_string(after.count()) + " ms");
        Forget();
        Fault lost{Fault::Kind::Close, ends[static_cast<std::size_t>(reply)]};
        lost.after = after;
        proxy.SetFault(lost);
        program->MainWindow().cboNewsServer.Click(); // ends the session
        bool hung = false;
        QTimer patience;
        QObject::connect(&patience, &QTimer::timeout, [&hung] {
            hung = true;
            Click("cmdStop");
        });
        patience.start(10s);
        Click("cmdFindNow");
        EXPECT_FALSE(hung);
        EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Disconnected");
        EXPECT_EQ(Stored().size(), reply == 8 ? 2U : 0U);
    }
}

TEST_F(WireTest, GarbageInBetween)
{
    StartSearches();
    SearchWith({});
    const std::uint64_t bytes = proxy.BytesPassed();
    const std::string garbage[] = {"garbage\r\n", std::string("\0\xff\r\n.\r\n", 7), "999 what?\r\n", "\r\n\r\n",
        "480 who are you?\r\n", "211 -1 99999999999 x\r\n", std::string(3000, '2')};
    int number = 0;
    for (std::uint64_t at = 0; at < bytes; at += 9) {
        const std::string& inserted = garbage[number++ % std::size(garbage)];
        SCOPED_TRACE(inserted.substr(0, 20) + " at " + std::to_string(at));
        SearchWith({Fault::Kind::Insert, at, inserted});
        for (const std::string& file : FilesBelow(destination))
            EXPECT_THAT(file, testing::EndsWith(".jpg"));
        EXPECT_EQ(ContentOf(PointerFile()).size() % 84, 0U);
    }
    // With a sound line all is well again.
    Forget();
    SearchWith({});
    EXPECT_EQ(Stored(), all);
}

TEST_F(WireTest, MoreThanAnybodyWants)
{
    StartSearches();
    SearchWith({});
    const std::uint64_t bytes = proxy.BytesPassed();
    std::uint64_t inBody = 0;
    for (std::uint64_t at = 100; inBody == 0 && at < bytes; at += 20) {
        SearchWith({Fault::Kind::Stall, at});
        if (server.CommandCount("body") > 3)
            inBody = at + 40;
    }
    ASSERT_NE(inBody, 0U);
    const long before = KilobytesInUse();
    const std::string lines = std::string(126, 'x') + "\r\n";
    std::string manyLines;
    while (manyLines.size() < 1 << 20)
        manyLines += lines;
    struct Row {
        const char* what;
        std::string bytes;
        std::size_t times;
        bool thenStall;
    };
    for (const Row& row : {Row{"a reply of 200 MB", manyLines, 200, false},
             Row{"a line of 50 MB", std::string(1 << 20, 'y'), 50, false}, Row{"no terminator", manyLines, 50, true}}) {
        SCOPED_TRACE(row.what);
        const auto longest = SearchWith({Fault::Kind::Insert, inBody, row.bytes, row.times, row.thenStall});
        std::printf("%s: longest wait of an event %d ms, %ld MB more in use\n", row.what,
            static_cast<int>(longest.count()), (KilobytesInUse() - before) / 1024);
        ExpectNothingLost();
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed for a while
        EXPECT_LT(KilobytesInUse() - before, 64 * 1024);
#endif
    }
}
