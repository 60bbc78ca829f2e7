#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "platform/Events.h"
#include "platform/Socket.h"
#include "tests/support/ScriptedServer.h"

#include <QDialog>
#include <QPushButton>
#include <QTabWidget>

#include <arpa/inet.h>
#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// A client on the program's own socket, which keeps what comes packet by packet.
class Client {
public:
    explicit Client(const ScriptedServer& server)
        : port(server.Port())
    {
        socket.DataArrival = [this] { packets.push_back(socket.GetData()); };
        Connect();
    }

    void Connect() { socket.Connect("127.0.0.1", port); }

    // Waits until that many bytes have come since the last call, or until the connection is no more.
    std::string Take(std::size_t size)
    {
        while (Text().size() < size && socket.State() != SocketState::Closing && socket.State() != SocketState::Error)
            WaitForEvents();
        const std::string text = Text();
        packetCount = packets.size();
        packets.clear();
        return text;
    }

    void Say(const std::string& line)
    {
        while (socket.State() != SocketState::Connected)
            WaitForEvents();
        socket.SendData(line + "\r\n");
    }

    std::string Text() const
    {
        std::string text;
        for (const std::string& packet : packets)
            text += packet;
        return text;
    }

    Socket socket;
    std::vector<std::string> packets;
    std::size_t packetCount = 0; // of the last Take()
    std::uint16_t port;
};

// A blocking socket of the system, or -1. It waits for an answer for some seconds, and not for ever.
int ConnectTo(std::uint16_t port)
{
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const timeval patience{5, 0};
    setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    return connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? client : -1;
}

constexpr auto conversation = R"(
    S: 200 hello
    C: group alt.kites
    S~ 211 3
    S~ \s7 9 alt.kites\r\n
    C: body 8
    S: 222 8
    S: ..dots
    X: packet
    S: .
    X: close
    X: connect
    S: 200 again
    X: wait-close
)";

}

TEST(ScriptedServerTest, PiecesArriveApart)
{
    const std::string body = "222 8\r\n..dots\r\n.\r\n";
    for (const std::size_t piece : {0, 1, 2}) {
        SCOPED_TRACE(piece);
        ScriptedServer server(conversation);
        server.SetPieceSize(piece);
        Client client(server);
        const auto packetsOf = [piece](std::size_t size) { return piece == 0 ? 1 : (size + piece - 1) / piece; };

        EXPECT_EQ(client.Take(11), "200 hello\r\n");
        EXPECT_EQ(client.packetCount, packetsOf(11));
        client.Say("group alt.kites");
        EXPECT_EQ(client.Take(21), "211 3 7 9 alt.kites\r\n");
        EXPECT_EQ(client.packetCount, packetsOf(5) + packetsOf(16));
        client.Say("body 8");
        EXPECT_EQ(client.Take(body.size()), body);
        EXPECT_EQ(client.packetCount, packetsOf(15) + packetsOf(3));
        client.Take(1);
        EXPECT_EQ(client.socket.State(), SocketState::Closing);
        client.Connect();
        EXPECT_EQ(client.Take(11), "200 again\r\n");
        EXPECT_FALSE(server.Finished());
        client.socket.Close();
        while (!server.Finished() && server.FirstProblem().find("wait-close") != std::string::npos)
            WaitForEvents();
        EXPECT_EQ(server.FirstProblem(), "");
        EXPECT_THAT(server.Received(), ElementsAre("group alt.kites", "body 8"));
    }
}

TEST(ScriptedServerTest, ProblemNamesTheScriptLine)
{
    struct Row {
        const char* what;
        const char* script;
        const char* said;
        const char* problem;
    };
    for (const Row& row :
        {Row{"another line", "S: 200\nC: next\n", "body 4", "script line 2 (C: next): the client sent body 4"},
            Row{"a line too many", "S: 200\nC: next\n", "next\r\nnext", "end of the script: after the end"},
            Row{"a blank too many", "S: 200\nC: stat 4\n", "stat 4 ", "script line 2"},
            Row{"a line where the client is to close", "S: 200\nX: wait-close\n", "next",
                "script line 2 (X: wait-close)"},
            Row{"a step that is none", "S: 200\nC: x\nX: jump\n", "x", "script line 3 (cannot be read: X: jump)"},
            Row{"a hang", "S: 200\nC: next\nC: next\n", "next", "script line 3 (C: next): nothing has happened"}}) {
        SCOPED_TRACE(row.what);
        ScriptedServer server(row.script);
        server.SetPatience(std::chrono::milliseconds(50));
        Client client(server);
        client.Take(5);
        client.Say(row.said);
        const std::string told = client.Take(1000);
        EXPECT_THAT(server.FirstProblem(), HasSubstr(row.problem));
        EXPECT_EQ(told, "503 " + server.FirstProblem() + "\r\n");
    }
}

TEST(ScriptedServerTest, PausesInTheMiddleOfAReply)
{
    ScriptedServer server("S: 200\nC: body 1\nS: 222\nX: pause here\nS: text\nS: .\nX: reset\n");
    Client client(server);
    client.Take(5);
    client.Say("body 1");
    std::string seen;
    server.OnPause = [&](const std::string& name) { seen = name + ":" + client.Text(); };
    EXPECT_EQ(client.Take(14), "222\r\ntext\r\n.\r\n");
    EXPECT_EQ(seen, "here:222\r\n");
    client.Take(1);
    EXPECT_NE(client.socket.State(), SocketState::Connected);
    EXPECT_EQ(server.FirstProblem(), "");
}

TEST(ScriptedServerTest, WaitsForTheClientToRead)
{
    ScriptedServer server("S: 200\nX: pause\nX: close\n");
    const int client = ConnectTo(server.Port());
    ASSERT_GE(client, 0);
    for (int pass = 0; pass < 1000; ++pass)
        DoEvents();
    EXPECT_FALSE(server.IsPaused());
    char bytes[10];
    EXPECT_EQ(recv(client, bytes, sizeof bytes, 0), 5);
    EXPECT_TRUE(Until([&] { return server.IsPaused(); }));
    server.Continue();
    EXPECT_TRUE(Until([&] { return server.Finished(); }));
    EXPECT_EQ(recv(client, bytes, sizeof bytes, 0), 0);
    close(client);
}

TEST(ScriptedServerTest, ResetIsNoOrderlyClose)
{
    ScriptedServer server("X: reset\n");
    const int client = ConnectTo(server.Port());
    ASSERT_GE(client, 0);
    while (!server.Finished())
        WaitForEvents();
    char byte = 0;
    EXPECT_EQ(recv(client, &byte, 1, 0), -1);
    EXPECT_EQ(errno, ECONNRESET);
    close(client);
}

TEST(SampleServerTest, ReadsAsRfc3977Says)
{
    const SampleGroup kites{
        "alt.kites", {{7, "Subject: a\r\nMessage-ID: <a@b>\r\n", ".\r\n..x\r\ny.\r\n"}, {9, "", "nine"}}};
    SampleServer server({kites, {"alt.none", {}}}, {"alice", "secret", SampleServer::Replies::StatusLineFirst});
    const int client = ConnectTo(server.Port());
    ASSERT_GE(client, 0);
    std::string input;
    const auto take = [&](std::string_view end) {
        while (!input.ends_with(end)) {
            char bytes[1000];
            const ssize_t count = recv(client, bytes, sizeof bytes, 0);
            if (count <= 0)
                break;
            input.append(bytes, static_cast<std::size_t>(count));
        }
        return std::exchange(input, {});
    };
    EXPECT_THAT(take("\r\n"), HasSubstr("201 "));
    struct Row {
        const char* command;
        const char* reply;
    };
    for (const Row& row :
        {Row{"group alt.kites", "480 *"}, Row{"authinfo pass secret", "482 *"}, Row{"authinfo user alice", "381 *"},
            Row{"authinfo pass wrong", "481 *"}, Row{"AUTHINFO USER alice", "381 *"},
            Row{"authinfo pass secret", "281 *"}, Row{"body 7", "412 *"}, Row{"next", "412 *"},
            Row{"group alt.none", "211 0 0 0 alt.none\r\n"}, Row{"next", "420 *"}, Row{"body", "420 *"},
            Row{"group alt.missing", "411 *"}, Row{"group", "501 *"}, Row{"group alt.kites", "211 2 7 9 alt.kites\r\n"},
            Row{"stat", "223 7 <a@b>\r\n"}, Row{"body 8", "423 *"}, Row{"stat 8x", "501 *"},
            Row{"next", "223 9 <9@sample.invalid>\r\n"}, Row{"next", "421 *"}, Row{"last", "223 7 <a@b>\r\n"},
            Row{"last", "422 *"}, Row{"head <a@b>", "221 0 <a@b>\r\nSubject: a\r\nMessage-ID: <a@b>\r\n.\r\n"},
            Row{"stat <c@d>", "430 *"}, Row{"body 7", "222 7 <a@b>\r\n..\r\n...x\r\ny.\r\n.\r\n"},
            Row{"body 9", "222 9 <9@sample.invalid>\r\nnine\r\n.\r\n"}, Row{"post", "500 *"},
            Row{"list", "215 the groups follow\r\nalt.kites 9 7 y\r\nalt.none 0 1 y\r\n.\r\n"}}) {
        SCOPED_TRACE(row.command);
        const std::string command = std::string(row.command) + "\r\n";
        ASSERT_EQ(send(client, command.data(), command.size(), 0), static_cast<ssize_t>(command.size()));
        const std::string_view wanted = row.reply;
        if (wanted.ends_with('*'))
            EXPECT_THAT(take("\r\n"), testing::StartsWith(std::string(wanted.substr(0, 4))));
        else
            EXPECT_EQ(take(wanted), wanted);
    }
    close(client);
    EXPECT_EQ(server.CommandCount("authinfo"), 5u);
    EXPECT_EQ(server.CommandCount("body"), 5u);
    EXPECT_EQ(server.Log().back().name, "list");
}

// What a user cannot do must not happen in a test either, or the test proves nothing.
TEST(ScreenTest, ReachesWhatAUserReaches)
{
    QTabWidget tabs;
    tabs.resize(300, 200);
    tabs.addTab(new QWidget, "front");
    auto* back = new QWidget;
    tabs.addTab(back, "back");
    int clicks = 0;
    const auto button = [&](const char* name, QPoint place) {
        auto* made = new QPushButton(back);
        made->setObjectName(name);
        made->setGeometry(QRect(place, QSize(80, 25)));
        QObject::connect(made, &QPushButton::clicked, made, [&] { ++clicks; });
        return made;
    };
    button("cmdPlain", {10, 10});
    button("cmdDisabled", {10, 50})->setEnabled(false);
    button("cmdHidden", {10, 90})->hide();
    button("cmdOutside", {400, 10});
    tabs.show();

    Click("cmdPlain");
    EXPECT_EQ(tabs.currentWidget(), back);
    EXPECT_EQ(clicks, 1);
    Click("cmdDisabled");
    for (const char* name : {"cmdHidden", "cmdOutside", "cmdMissing"})
        EXPECT_THROW(Click(name), std::runtime_error) << name;
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    EXPECT_THROW(Click("cmdPlain"), std::runtime_error);
    EXPECT_EQ(clicks, 1);
}
