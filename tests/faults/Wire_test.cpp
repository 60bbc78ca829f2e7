#include "tests/shell/ProgramTest.h"

#include "demo/sample/Encoders.h"
#include "tests/support/FaultProxy.h"

#include <QElapsedTimer>
#include <QTimer>

#include <fstream>
#include <malloc.h>
#include <openssl/ssl.h>

namespace {

using namespace std::chrono_literals;
using Fault = FaultProxy::Fault;
using enum Fault::Kind;

class WireTest : public ProgramTest {
protected:
    void SetUp() override
    {
        Start({"alt.kites", "alt.boats"}, proxy->Port());
        Check("chkGroupSubDir", false);
        SearchWith({});
        EXPECT_EQ(Stored(), all);
        isSound = true;
        bytes = proxy->BytesPassed();
        ASSERT_GT(bytes, 500U);
    }

    // For the connection that begins now.
    void SetFault(const Fault& fault)
    {
        proxy->SetFault(fault);
        program->MainWindow().cboNewsServer.Click(); // ends the session
    }

    // A search on a new connection in which something goes wrong. When nothing has come any more for a while, the user
    // stops it. Gives the longest time that an event had to wait meanwhile, in milliseconds.
    qint64 SearchWith(const Fault& fault, bool mayHang = true)
    {
        Forget();
        SetFault(fault);
        QTimer heart;
        QElapsedTimer beat;
        qint64 longest = 0;
        int idle = 0;
        std::uint64_t seen = 0;
        QObject::connect(&heart, &QTimer::timeout, [&] {
            longest = std::max(longest, beat.restart());
            idle = proxy->BytesPassed() == seen ? idle + 1 : 0;
            seen = proxy->BytesPassed();
            if (idle > 10 && ((proxy->HasStruck() && mayHang) || idle > 2000))
                Click("cmdStop");
        });
        beat.start();
        heart.start(2ms);
        Click("cmdFindNow");
        EXPECT_TRUE(Until([&] { return proxy->HasStruck() || fault.kind == None; }));
        EXPECT_EQ(CaptionOf("frmTamarack"), frmTamarack::idleCaption);
        EXPECT_TRUE(IsEnabled("cmdFindNow"));
        return longest;
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
        auto reply = replies.begin();
        while (at >= reply->size())
            at -= reply++->size();
        return at > 0 && at <= reply->find('\n');
    }

    const std::vector<std::string> all{"blue.jpg=blue", "red.jpg=red", "white.jpg=white"};
    std::uint64_t bytes = 0; // of the search without a fault
    std::vector<std::string> replies; // to it
    std::atomic<bool> isSound = false; // they are known
    const SampleGroups groups{GroupOf("alt.kites", 1, {Uuencode("red", "red.jpg"), Uuencode("blue", "blue.jpg")}),
        GroupOf("alt.boats", 1, {Uuencode("white", "white.jpg")})};
    SampleServer server{groups, {.send = [this](Channel& client, std::string_view reply) {
                            if (!isSound)
                                replies.emplace_back(reply);
                            return client.Send(reply);
                        }}};
    std::unique_ptr<FaultProxy> proxy = std::make_unique<FaultProxy>(server.Port());
};

}

TEST_F(WireTest, EveryReplySplitAtEveryByte)
{
    for (std::uint64_t at = 1; at < bytes && !HasFailure(); ++at) {
        SCOPED_TRACE("split at " + std::to_string(at));
        SearchWith({Split, at}, IsInStatusLine(at));
        ExpectWholeFiles();
        EXPECT_TRUE(IsInStatusLine(at) || Stored() == all);
    }
}

// A key update, or in TLS 1.2 a renegotiation.
TEST_F(WireTest, NewKeysInTheMiddle)
{
    constexpr std::uint64_t never = ~0U;
    std::atomic<std::uint64_t> at, left;
    const auto renew = [&](Channel& client, std::string_view reply) {
        if (reply.starts_with("201 "))
            left = at.load();
        const std::uint64_t first = left;
        left = first < reply.size() ? never : first - reply.size();
        if (first >= reply.size())
            return client.Send(reply);
        const bool isSent = client.Send(reply.substr(0, first));
        client.RenewKeys();
        return isSent && client.Send(reply.substr(first));
    };
    Socket& TCP1 = program->MainWindow().TCP1;
    TCP1.AcceptCertificate = [](const Certificate&, const auto&) { return true; };
    for (const int protocol : {TLS1_3_VERSION, TLS1_2_VERSION}) {
        SampleServer encrypting(
            groups, {.send = renew, .identity = std::make_shared<Identity>(), .protocol = protocol});
        SetFault({});
        proxy = std::make_unique<FaultProxy>(encrypting.SecurePort());
        TypeInto("txtPort", std::to_string(proxy->Port()));
        TCP1.SecurePorts = {proxy->Port()};
        for (at = 0; at < bytes && !HasFailure(); at += 40) {
            if (IsInStatusLine(at))
                continue;
            SearchWith({});
            EXPECT_EQ(Stored(), all) << at;
            EXPECT_GT(left, never / 2) << "no new keys";
            EXPECT_EQ(TCP1.Encrypted()->protocol, protocol == TLS1_3_VERSION ? "TLS 1.3" : "TLS 1.2");
        }
        SetFault({});
    }
}

TEST_F(WireTest, EveryReplyCutOff)
{
    for (std::uint64_t at = 0; at < bytes && !HasFailure(); at += 5) {
        const Fault::Kind kinds[] = {Close, Reset, Stall};
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
        SCOPED_TRACE(at);
        SearchWith({Insert, at, garbage[at / 9 % std::size(garbage)]});
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
    const auto kilobytesInUse = [] {
        malloc_trim(0);
        long size = 0, resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        return resident * 4;
    };
    std::uint64_t inBody = 20;
    for (auto reply = replies.begin(); !reply->starts_with("222 "); ++reply)
        inBody += reply->size();
    const long before = kilobytesInUse();
    std::string manyLines;
    while (manyLines.size() < 1 << 20)
        manyLines += std::string(126, 'x') + "\r\n";
    // A reply of 200 MB, a line of 50 MB, and one without its end.
    for (const Fault& fault : {Fault{Insert, inBody, manyLines, 200}, {Insert, inBody, std::string(1 << 20, 'y'), 50},
             {Insert, inBody, manyLines, 50, true}}) {
        const auto longest = SearchWith(fault);
        std::printf("longest wait of an event %d ms, %ld MB more in use\n", static_cast<int>(longest),
            (kilobytesInUse() - before) / 1024);
        ExpectNothingLost();
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed for a while
        EXPECT_LT(kilobytesInUse() - before, 64 * 1024);
#endif
    }
}
