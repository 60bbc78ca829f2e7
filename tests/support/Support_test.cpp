#include "demo/support/Screen.h"
#include "platform/Events.h"
#include "platform/Socket.h"
#include "tests/support/ScriptedServer.h"

#include <QDialog>
#include <QPushButton>
#include <QTabWidget>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// What keeps the tests from passing without having tried anything.

using testing::HasSubstr;

namespace {

// A client on the program's own socket, which keeps what comes packet by packet.
class Client {
public:
    explicit Client(const ScriptedServer& server)
    {
        socket.DataArrival = [this] {
            packets.push_back(socket.GetData());
            text += packets.back();
        };
        socket.Connect("127.0.0.1", server.Port());
    }

    // Waits until so much has come in all, or until the connection is no more.
    const std::string& Take(std::size_t size)
    {
        while (text.size() < size && socket.State() != SocketState::Closing && socket.State() != SocketState::Error)
            WaitForEvents();
        return text;
    }

    Socket socket;
    std::vector<std::string> packets;
    std::string text;
};

}

TEST(ScriptedServerTest, PiecesArriveApartAndAPauseIsBetween)
{
    for (const std::size_t piece : {0, 1, 2}) {
        SCOPED_TRACE(piece);
        ScriptedServer server("S~ 200 hello\nX: packet\nS: x\nX: pause here\nS: y\nS: .\n");
        server.SetPieceSize(piece);
        Client client(server);
        std::string seen;
        server.OnPause = [&](const std::string& name) { seen = name + ":" + client.text; };
        EXPECT_EQ(client.Take(18), "200 hellox\r\ny\r\n.\r\n");
        EXPECT_EQ(seen, "here:200 hellox\r\n");
        const std::vector<std::size_t> packetCounts{3, 18, 5 + 2 + 3};
        EXPECT_EQ(client.packets.size(), packetCounts[piece]);
        EXPECT_EQ(server.FirstProblem(), "");
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
            Row{"a step that is none", "S: 200\nC: x\nX: jump\n", "x", "script line 3 (X: jump)"},
            Row{"a hang", "S: 200\nC: next\nC: next\n", "next", "script line 3 (C: next): nothing has happened"}}) {
        SCOPED_TRACE(row.what);
        ScriptedServer server(row.script);
        server.SetPatience(std::chrono::milliseconds(50));
        Client client(server);
        client.Take(5);
        client.socket.SendData(std::string(row.said) + "\r\n");
        const std::string told = client.Take(1000).substr(5);
        EXPECT_THAT(server.FirstProblem(), HasSubstr(row.problem));
        EXPECT_EQ(told, "503 " + server.FirstProblem() + "\r\n");
    }
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
