#include "demo/sample/Channel.h"
#include "demo/sample/Loopback.h"
#include "demo/support/Screen.h"
#include "platform/Events.h"
#include "platform/Socket.h"
#include "tests/support/ScriptedServer.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <malloc.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SocketTest, PortIsAWholeNumberWithWhichTheTextBegins)
{
    for (const auto& [text, port] : {std::pair(" 119abc", 119), {"65535", 65535}, {"1", 1}, {"", 0}, {"abc", 0},
             {"0", 0}, {"-119", 0}, {"65536", 0}, {"119.5", 0}, {"1e300", 0}})
        EXPECT_EQ(Socket::PortFrom(text), port) << text;
}

// What a handler posts is delivered too, but one that posts for ever does not hold the caller.
TEST(EventsTest, DoEventsDeliversWhatIsPostedMeanwhile)
{
    int posted = 0;
    int last = 5;
    const std::function<void()> post = [&] {
        if (++posted < last)
            QMetaObject::invokeMethod(qApp, post, Qt::QueuedConnection);
    };
    post();
    DoEvents();
    EXPECT_EQ(posted, last);
    last = 1'000'000;
    post();
    DoEvents();
    EXPECT_LT(posted, 1000);
    last = 0;
    DoEvents();
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
            EXPECT_THAT(events, IsEmpty());
        }
        socket.Connect("127.0.0.1", newServer.Port());
        while (events.empty() || events.back() != "new\r\n")
            WaitForEvents();
        EXPECT_THAT(events, ElementsAre("4", "5", "6", "7", "new\r\n"));
    }
    EXPECT_TRUE(sawBytes && sawEnd);
}

// A handler may let its bytes wait for as long as a message box is up.
TEST(SocketTest, WhatNobodyTakesWaitsAtTheOtherSide)
{
    const Identity identity;
    for (const bool encrypted : {false, true}) {
        SCOPED_TRACE(encrypted);
        const int listening = socket(AF_INET, SOCK_STREAM, 0);
        const std::uint16_t port = ListenOnLoopback(listening);
        std::atomic<std::size_t> sent = 0;
        std::atomic<bool> enough = false;
        std::thread server([&] {
            const int descriptor = accept(listening, nullptr, nullptr);
            {
                Channel channel(descriptor, encrypted ? &identity : nullptr);
                const std::string block(1 << 16, 'x');
                while (!enough && channel.Send(block))
                    sent += block.size();
            }
            close(descriptor);
        });
        Socket socket;
        if (encrypted)
            socket.SecurePorts = {port};
        socket.AcceptCertificate = [](const Certificate&, const auto&) { return true; };
        socket.Connect("127.0.0.1", port);
        while (socket.State() != SocketState::Connected)
            WaitForEvents();
        const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
        const std::size_t inUseBefore = inUse();
        std::size_t before = 0;
        do {
            before = sent;
            EXPECT_FALSE(Until([] { return false; }, std::chrono::milliseconds(200)));
        } while (before != sent && sent < 8 * Socket::mostWaiting);
        enough = true;
        EXPECT_LT(inUse() - inUseBefore, Socket::mostWaiting * 5 / 4);
        std::size_t received = 0, most = 0;
        socket.DataArrival = [&] {
            const std::size_t count = socket.GetData().size();
            most = std::max(most, count);
            received += count;
        };
        bool closed = false;
        socket.Closed = [&] { closed = true; };
        socket.AnnounceWaiting();
        while (!closed)
            WaitForEvents();
        server.join();
        EXPECT_LE(most, Socket::mostWaiting);
        EXPECT_EQ(received, sent);
        close(listening);
    }
}

// A search is one long call: what its connections held must not be kept until it has returned. The call is a handler of
// the very socket here, which closes the connection that it tells of, too.
TEST(SocketTest, WhatIsOverIsGivenBackWhileAHandlerStillRuns)
{
    const auto descriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const int listening = socket(AF_INET, SOCK_STREAM, 0), deaf = socket(AF_INET, SOCK_STREAM, 0);
    const std::uint16_t openPort = ListenOnLoopback(listening), refusingPort = ListenOnLoopback(deaf);
    close(deaf);
    Socket socket;
    const auto connectUntil = [&socket](std::uint16_t port, SocketState state) {
        socket.Connect("127.0.0.1", port);
        while (socket.State() != state)
            WaitForEvents();
    };
    bool done = false;
    socket.StateChanged = [&] {
        if (socket.State() != SocketState::Connected || std::exchange(done, true))
            return;
        const std::ptrdiff_t before = descriptors();
        std::size_t kept = 0;
        for (int round = 0; round < 100; ++round) {
            if (round == 20) // all that is made once has been made
                kept = mallinfo2().uordblks;
            connectUntil(refusingPort, SocketState::Error);
            EXPECT_EQ(descriptors(), before - 1); // a refused connection has none
            if (round % 10 == 0) // so many may wait for their server
                connectUntil(openPort, SocketState::Connected);
            EXPECT_LE(descriptors(), before);
            socket.Close();
        }
        EXPECT_LT(mallinfo2().uordblks - kept, 80 * 100U) << "bytes of connections that are over";
    };
    socket.Connect("127.0.0.1", openPort);
    while (!done)
        WaitForEvents();
    close(listening);
}
