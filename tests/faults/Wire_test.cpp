#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/ResidentMemory.h"

#include <QElapsedTimer>
#include <QTimer>

#include <atomic>
#include <functional>
#include <malloc.h>
#include <mutex>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>

namespace {

using namespace std::chrono_literals;

// What goes wrong on the way from the server to the client, and at which byte of what the server sends.
struct Fault {
    enum class Kind {
        None,
        Split, // the rest of what has come so far follows a moment later
        Close,
        Reset,
        Stall, // nothing comes any more, and the connection stays open
        Insert, // these bytes come in between, `times` over; then as Stall if `thenStall`
        NewKeys, // an encrypted connection agrees on new ones
    };

    Kind kind = Kind::None;
    std::uint64_t at = 0;
    std::string bytes = {};
    std::size_t times = 1;
    bool thenStall = false;
};

class WireTest : public ProgramTest {
protected:
    void SetUp() override
    {
        Start({"alt.kites", "alt.boats"}, server.Port());
        Check("chkGroupSubDir", false);
        SearchWith({});
        EXPECT_EQ(Stored(), all);
        bytes = passed.load();
        ASSERT_GT(bytes, 500U);
    }

    // A search on a new connection in which something goes wrong. When nothing has come any more for a while, the user
    // stops it. Gives the longest time that an event had to wait meanwhile.
    std::chrono::milliseconds SearchWith(const Fault& newFault, bool mayHang = true)
    {
        Forget();
        SetFault(newFault);
        QTimer heart;
        QElapsedTimer beat;
        qint64 longest = 0;
        int idle = 0;
        std::uint64_t seen = 0;
        QObject::connect(&heart, &QTimer::timeout, [&] {
            longest = std::max(longest, beat.restart());
            idle = passed == seen ? idle + 1 : 0;
            seen = passed.load();
            if (idle > 10 && ((struck && mayHang) || idle > 2000))
                Click("cmdStop");
        });
        beat.start();
        heart.start(2ms);
        Click("cmdFindNow");
        EXPECT_TRUE(struck || newFault.kind == Fault::Kind::None);
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
        SetFault({});
        desktop.boxes.clear();
        Click("cmdFindNow");
        EXPECT_TRUE(desktop.boxes.empty());
        EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(3, "alt.kites") + PointerRecord(2, "alt.boats"));
    }

    // Of a status line that comes in pieces only the first piece is judged. Any other text may come so.
    bool IsInStatusLine(std::uint64_t at) const
    {
        for (const std::string& reply : replies) {
            if (at < reply.size())
                return at > 0 && at <= reply.find('\n');
            at -= reply.size();
        }
        return false;
    }

    static long KilobytesInUse()
    {
        malloc_trim(0);
        return ResidentKilobytes();
    }

    const std::vector<std::string> all{"blue.jpg=blue", "red.jpg=red", "white.jpg=white"};
    std::atomic<std::uint64_t> bytes = 0; // that a search without a fault gets
    std::vector<std::string> replies; // of the search without a fault
    std::atomic<std::uint64_t> passed = 0; // on the last connection
    std::atomic<bool> struck = false;

    // For the connection that begins now.
    void SetFault(const Fault& newFault)
    {
        const std::lock_guard lock(mutex);
        fault = newFault;
        struck = false;
        program->MainWindow().cboNewsServer.Click(); // ends the session
    }

    bool Send(Channel& client, std::string_view reply)
    {
        thread_local Fault now; // a connection has a thread of its own
        if (reply.starts_with("201 ")) {
            const std::lock_guard lock(mutex);
            now = fault;
            passed = 0;
        }
        const std::uint64_t before = passed;
        passed += reply.size();
        if (now.kind == Fault::Kind::None && bytes == 0)
            replies.emplace_back(reply);
        // The end may come right behind a whole reply.
        const bool isEnd = now.kind == Fault::Kind::Close || now.kind == Fault::Kind::Reset;
        if (now.kind == Fault::Kind::None || now.at < before || now.at >= passed + (isEnd ? 1 : 0))
            return client.Send(reply);
        const std::size_t first = static_cast<std::size_t>(now.at - before);
        struck = now.kind == Fault::Kind::Split; // the first part may be all that the client waits for
        if (!client.Send(reply.substr(0, first)))
            return false;
        if (now.kind == Fault::Kind::Split)
            std::this_thread::sleep_for(1ms);
        const linger reset{now.kind == Fault::Kind::Reset ? 1 : 0, 0};
        setsockopt(client.Descriptor(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
        if (now.kind == Fault::Kind::NewKeys)
            client.RenewKeys();
        bool goOn = !isEnd;
        for (std::size_t time = 0; goOn && time < now.times; ++time)
            goOn = client.Send(now.bytes);
        struck = true;
        if (goOn && (now.kind == Fault::Kind::Stall || now.thenStall)) {
            pollfd waiting{client.Descriptor(), POLLIN, 0};
            goOn = poll(&waiting, 1, -1) < 0;
        }
        return goOn && client.Send(reply.substr(first));
    }

    std::mutex mutex;
    Fault fault;

    const SampleGroups groups{GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")}),
        GroupOf("alt.boats", 1, {Uuencode("white", "white.jpg")})};
    const std::function<bool(Channel&, std::string_view)> send = std::bind_front(&WireTest::Send, this);
    SampleServer server{groups, {.send = send}};
};

}

TEST_F(WireTest, EveryReplySplitAtEveryByte)
{
    for (std::uint64_t at = 1; at < bytes && !HasFailure(); ++at) {
        SCOPED_TRACE("split at " + std::to_string(at));
        SearchWith({Fault::Kind::Split, at}, IsInStatusLine(at));
        if (IsInStatusLine(at))
            ExpectWholeFiles();
        else
            EXPECT_EQ(Stored(), all);
    }
}

TEST_F(WireTest, EveryReplyCutOff)
{
    for (std::uint64_t at = 0; at < bytes && !HasFailure(); at += 5) {
        const Fault::Kind kinds[] = {Fault::Kind::Close, Fault::Kind::Reset, Fault::Kind::Stall};
        SCOPED_TRACE("cut off at " + std::to_string(at));
        SearchWith({kinds[at / 5 % 3], at});
        ExpectNothingLost();
    }
}

TEST_F(WireTest, GarbageInBetween)
{
    const std::string garbage[] = {"garbage\r\n", std::string("\0\xff\r\n.\r\n", 7), "999 what?\r\n", "\r\n\r\n",
        "480 who are you?\r\n", "211 -1 99999999999 x\r\n", std::string(3000, '2')};
    for (std::uint64_t at = 0; at < bytes; at += 9) {
        const std::string& inserted = garbage[at / 9 % std::size(garbage)];
        SCOPED_TRACE(inserted.substr(0, 20) + " at " + std::to_string(at));
        SearchWith({Fault::Kind::Insert, at, inserted});
        for (const std::string& file : FilesBelow(destination))
            EXPECT_THAT(file, testing::EndsWith(".jpg"));
        EXPECT_EQ(ContentOf(PointerFile()).size() % 84, 0U);
    }
    // With a sound line all is well again.
    SearchWith({});
    EXPECT_EQ(Stored(), all);
}

TEST_F(WireTest, MoreThanAnybodyWants)
{
    std::uint64_t inBody = 0;
    for (auto reply = replies.begin(); !reply->starts_with("222 "); ++reply)
        inBody += reply->size();
    inBody += 20;
    const long before = KilobytesInUse();
    std::string manyLines;
    while (manyLines.size() < 1 << 20)
        manyLines += std::string(126, 'x') + "\r\n";
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

// A key update, or in TLS 1.2 a renegotiation, at every fortieth byte.
TEST_F(WireTest, NewKeysInTheMiddle)
{
    for (const int protocol : {TLS1_3_VERSION, TLS1_2_VERSION}) {
        const SampleServer encrypting(
            groups, {.send = send, .identity = std::make_shared<Identity>(), .protocol = protocol});
        Socket& TCP1 = program->MainWindow().TCP1;
        TypeInto("txtPort", std::to_string(encrypting.SecurePort()));
        TCP1.SecurePorts = {encrypting.SecurePort()};
        TCP1.AcceptCertificate = [](const Certificate&, const auto&) { return true; };
        for (std::uint64_t at = 0; at < bytes; at += 40) {
            SCOPED_TRACE(at);
            SearchWith({Fault::Kind::NewKeys, at}, IsInStatusLine(at));
            if (IsInStatusLine(at)) {
                ExpectWholeFiles();
                continue;
            }
            EXPECT_EQ(Stored(), all);
            EXPECT_EQ(TCP1.Encrypted()->protocol, protocol == TLS1_3_VERSION ? "TLS 1.3" : "TLS 1.2");
        }
    }
}
