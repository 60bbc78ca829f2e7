#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Events.h"
#include "platform/Socket.h"
#include "tests/support/ScriptedServer.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <malloc.h>
#include <openssl/ssl.h>

TEST(SocketTest, PortIsAWholeNumberWithWhichTheTextBegins)
{
    for (const auto& [text, port] : {std::pair(" 119abc", 119), {"65535", 65535}, {"1", 1}, {"", 0}, {"abc", 0},
             {"0", 0}, {"-119", 0}, {"65536", 0}, {"119.5", 0}, {"1e300", 0}})
        EXPECT_EQ(Socket::PortFrom(text), port) << text;
}

// However far the old connection has come (connecting, connected, its bytes or its end on the way), nothing of it is
// heard once it has been closed or replaced.
TEST(SocketTest, NothingIsHeardOfAConnectionThatWasLeft)
{
    bool sawBytes = false, sawEnd = false;
    for (int passes = 0; passes < 32; ++passes) {
        SCOPED_TRACE(passes);
        ScriptedServer oldServer("S: old\nX: close"), newServer("S: new");
        Socket socket;
        std::vector<std::string> events;
        socket.StateChanged = [&] { events.push_back(std::to_string(static_cast<int>(socket.State()))); };
        socket.DataArrival = [&] { events.push_back(socket.GetData()); };
        socket.Closed = [&] { events.push_back("closed"); };
        socket.Connect("127.0.0.1", oldServer.Port());
        for (int pass = 0; pass < passes / 2; ++pass)
            QCoreApplication::processEvents();
        sawBytes = sawBytes || std::ranges::count(events, "old\r\n") > 0;
        sawEnd = sawEnd || std::ranges::count(events, "closed") > 0;
        events.clear();
        if (passes % 2 == 1) {
            socket.Close();
            EXPECT_EQ(socket.State(), SocketState::Closed);
            for (int pass = 0; pass < 16; ++pass)
                DoEvents();
            EXPECT_THAT(events, testing::IsEmpty());
        }
        socket.Connect("127.0.0.1", newServer.Port());
        EXPECT_TRUE(Until([&] { return !events.empty() && events.back() == "new\r\n"; }));
        EXPECT_THAT(events, testing::ElementsAre("4", "5", "6", "7", "new\r\n"));
    }
    EXPECT_TRUE(sawBytes && sawEnd);
}

// A handler may let its bytes wait for as long as a message box is up.
TEST(SocketTest, WhatNobodyTakesWaitsAtTheOtherSide)
{
    for (const bool encrypted : {false, true}) {
        SCOPED_TRACE(encrypted);
        std::atomic<std::size_t> sent = 0;
        std::atomic<bool> enough = false;
        const SampleServer server({},
            {.send =
                    [&](Channel& channel, std::string_view) {
                        const std::string block(1 << 16, 'x');
                        while (!enough && channel.Send(block))
                            sent += block.size();
                        return false;
                    },
                .identity = std::make_shared<Identity>()});
        Socket socket;
        socket.SecurePorts = {server.SecurePort()};
        socket.AcceptCertificate = [](const Certificate&, const auto&) { return true; };
        const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
        socket.Connect("127.0.0.1", encrypted ? server.SecurePort() : server.Port());
        ASSERT_TRUE(Until([&] { return socket.State() == SocketState::Connected; }));
        const std::size_t inUseBefore = inUse();
        std::size_t before = 0;
        do {
            before = sent;
            EXPECT_FALSE(Until([] { return false; }, std::chrono::milliseconds(200)));
        } while (before != sent && sent < 8 * Socket::mostWaiting);
        enough = true;
        EXPECT_LT(inUse() - inUseBefore, Socket::mostWaiting * 5 / 4);
        std::size_t received = 0;
        socket.DataArrival = [&] {
            const std::size_t count = socket.GetData().size();
            EXPECT_LE(count, Socket::mostWaiting);
            received += count;
        };
        bool closed = false;
        socket.Closed = [&] { closed = true; };
        socket.AnnounceWaiting();
        EXPECT_TRUE(Until([&] { return closed; }));
        EXPECT_EQ(received, sent);
    }
}

// A server that is too busy. In TLS 1.2 its words and its end may come with the end of the handshake.
TEST(SocketTest, AGreetingThatIsFollowedByTheEnd)
{
    const TemporaryFolder folder;
    const auto identity = std::make_shared<Identity>(Identity::Wishes{.names = {"IP:127.0.0.1"}, .isAuthority = true});
    MakeFile(folder.File("authority.pem"), identity->Certificate());
    const SampleServer server({},
        {.send = [](Channel& client, std::string_view bytes) { return client.Send(bytes) && false; },
            .identity = identity,
            .protocol = TLS1_2_VERSION});
    for (int round = 0; round < 20; ++round) {
        Socket socket;
        socket.SecurePorts = {server.SecurePort()};
        socket.AuthoritiesFile = folder.File("authority.pem");
        std::string events;
        socket.DataArrival = [&] { events += socket.GetData().substr(0, 4); };
        socket.Closed = [&] { events += "closed"; };
        socket.Connect("127.0.0.1", server.SecurePort());
        EXPECT_TRUE(Until([&] { return events.ends_with("closed") || socket.State() == SocketState::Error; }));
        EXPECT_EQ(events, "201 closed") << socket.FailureReason();
    }
}
