#include "demo/sample/Loopback.h"
#include "fuzzing/CameToSomething.h"
#include "fuzzing/OffscreenApplication.h"
#include "platform/Events.h"
#include "session/NewsSession.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sys/socket.h>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr std::string_view terminator = "\r\n.\r\n";

void Demand(bool kept)
{
    if (!kept)
        std::abort();
}

struct QuietDesktop : Desktop {
    MessageAnswer MsgBox(std::string_view, std::string_view, MessageButtons) override { return MessageAnswer::Ok; }
    void Sleep(std::chrono::milliseconds) override { }
};

// The real session on a real connection. The input is a conversation: the letters of its first line are what the client
// does once it has connected (see Do), the rest is what the server says, its greeting and its answers to the login
// among it, in packets:
//
//   |   ends a packet; the next one goes out when the client has had it
//   ~   the next one waits for a line of the client
//   +   the next one waits for a new connection
//   !   the server hangs up
//   ^   the user presses Stop
//   %   the time of the head that is waited for is up
//
// Where the conversation cannot go on, the server hangs up and the user presses Stop.
class Conversation {
public:
    Conversation()
    {
        const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        Demand(ListenOnLoopback(listening) != 0 && listener.setSocketDescriptor(listening));
        QObject::connect(&listener, &QTcpServer::newConnection, &listener, [this] {
            server.reset(listener.nextPendingConnection());
            heard = true;
            clientSpoke = false;
            clientCame = connections++ > 0;
        });
        QObject::connect(&clock, &QTimer::timeout, &clock, [this] { Step(); });
        MainForm.cboNewsServer.AddItem("127.0.0.1");
        MainForm.cboNewsServer.SetListIndex(0);
        MainForm.txtPort.SetText(std::to_string(listener.serverPort()));
    }

    void Run(std::string_view input)
    {
        const std::size_t lineEnd = input.find('\n');
        const std::string_view letters = input.substr(0, std::min(lineEnd, mostLetters));
        rest = lineEnd == std::string_view::npos ? std::string_view() : input.substr(lineEnd + 1);
        length = rest.size();
        MainForm.chkUserName.SetValue(letters.find('u') != std::string_view::npos ? 1 : 0);

        NewsSession newSession(MainForm, desktop);
        session = &newSession;
        session->LongestReply = 1000;
        session->CurrentGroup = "alt.kites";
        session->GroupListArrived = [](const std::string& text) {
            ExpectOneReply(text);
            DoEvents();
        };
        Socket& TCP1 = MainForm.TCP1;
        TCP1.StateChanged = [this, show = TCP1.StateChanged] {
            connected = connected || MainForm.TCP1.State() == SocketState::Connected;
            if (MainForm.TCP1.State() == SocketState::Connecting)
                MainForm.Timer1.SetInterval(15s);
            idle = 0;
            show();
        };
        TCP1.DataArrival = [this, receive = TCP1.DataArrival] { Hear(receive); };

        answers = 0;
        idle = 0;
        connections = 0;
        connected = false;
        clock.start(0);
        (void)session->TcpConnect();
        Demand(connected);
        for (const char letter : letters)
            Do(letter);
        session->TcpDisconnect();
        Demand(session->RecvBuffer.Length() == 0 && session->LastBody.empty());
        clock.stop();
        server.reset();
        cameToSomething = answers > 0 && rest.empty();
    }

private:
    static constexpr std::size_t mostLetters = 12;
    static constexpr int patience = 100; // turns of the event loop, of which one DoEvents takes up to sixteen

    static void ExpectOneReply(std::string_view text) { Demand(text.find(terminator) == std::string_view::npos); }

    void Do(char letter)
    {
        std::int32_t number = session->CurrentArticle;
        switch (letter) {
        case 'c': // as every long operation begins
            session->StopFlag = false;
            (void)session->TcpConnect();
            break;
        case 'd':
            session->TcpDisconnect();
            break;
        case 'g':
            (void)session->CmdGroup("alt.kites");
            break;
        case 'n':
            (void)session->CmdNext();
            break;
        case 's':
            (void)session->CmdStat(number);
            break;
        case 'h':
            ExpectOneReply(session->CmdHead(number));
            break;
        case 'b':
            ExpectOneReply(session->CmdBody(number));
            break;
        case 'l':
            session->CmdList();
            break;
        case 'm':
            session->CmdManual("help");
            break;
        case 'i':
            for (int turn = 0; turn < 8; ++turn)
                WaitForEvents();
            break;
        default: // u: the server is known to want a user name
            break;
        }
    }

    // The client has a packet.
    void Hear(const std::function<void()>& receive)
    {
        heard = true;
        const bool awaited = session->ReplyState == Reply::Awaiting;
        ++receiving;
        receive();
        --receiving;
        if (awaited && session->ReplyState != Reply::Awaiting && session->CommandKind != Command::Greeting)
            ++answers;
        Demand(session->RecvBuffer.Length() <= std::min(length, session->LongestReply));
        // Wherever the packets were cut, no terminator has been passed over.
        if (receiving == 0 && MainForm.TCP1.State() == SocketState::Connected)
            Demand(session->ReplyText.empty() && session->RecvBuffer.Text().find(terminator) == std::string_view::npos);
    }

    // One turn of the event loop.
    void Step()
    {
        if (!connected)
            return;
        const bool open = server != nullptr && server->state() == QAbstractSocket::ConnectedState;
        if (open && !server->readAll().isEmpty()) {
            clientSpoke = true;
            idle = 0;
        }
        const bool user = rest.starts_with('^') || rest.starts_with('%');
        const bool waits
            = rest.empty() || (rest.front() == '~' && !clientSpoke) || (rest.front() == '+' && !clientCame);
        if (waits || !(user || (open && heard))) {
            if (++idle < patience)
                return;
            session->StopFlag = true;
            if (server != nullptr)
                server->abort();
            return;
        }
        idle = 0;
        const std::size_t packet = std::min(rest.find_first_of("|~+!^%"), rest.size());
        if (packet > 0) {
            server->write(rest.data(), static_cast<qint64>(packet));
            server->flush();
            heard = false;
            rest.remove_prefix(packet);
            return;
        }
        switch (rest.front()) {
        case '~':
            clientSpoke = false;
            break;
        case '+':
            clientCame = false;
            break;
        case '!':
            server->close();
            break;
        case '^':
            session->StopFlag = true;
            break;
        case '%':
            if (MainForm.Timer1.Enabled()) {
                MainForm.Timer1.SetInterval(1ms);
                std::this_thread::sleep_for(2ms);
            }
            break;
        default:
            break;
        }
        rest.remove_prefix(1);
    }

    QuietDesktop desktop;
    frmTamarack MainForm;
    NewsSession* session = nullptr;
    QTcpServer listener;
    std::unique_ptr<QTcpSocket> server;
    QTimer clock;
    std::string_view rest; // of what the server says
    std::size_t length = 0; // of all of it
    bool connected = false;
    bool heard = true; // the last packet, by the client
    bool clientSpoke = false; // since the last '~'
    bool clientCame = false; // again, since the last '+'
    int connections = 0;
    int idle = 0; // turns in which nothing happened
    int receiving = 0;
    int answers = 0; // that were taken for one
};

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    NeedApplication();
    static Conversation& conversation = *new Conversation;
    conversation.Run({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
