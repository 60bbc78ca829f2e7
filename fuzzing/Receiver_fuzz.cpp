#include "OffscreenApplication.h"
#include "platform/Events.h"
#include "session/NewsSession.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace {

struct QuietDesktop : Desktop {
    MessageAnswer MsgBox(std::string_view, std::string_view, MessageButtons) override { return MessageAnswer::Ok; }
    void Sleep(std::chrono::milliseconds) override { }
};

// The real session on a real connection, whose other end says what the input tells.
struct Client {
    Client()
    {
        listener.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&listener, &QTcpServer::newConnection, &listener, [this] {
            server = listener.nextPendingConnection();
            server->write("200 hello\r\n");
        });
        QObject::connect(&feeder, &QTimer::timeout, &feeder, [this] { Feed(); });
        MainForm.cboNewsServer.AddItem("127.0.0.1");
        MainForm.cboNewsServer.SetListIndex(0);
        MainForm.chkUserName.SetValue(1);
        // The field takes four digits; set from code it is not asked.
        MainForm.txtPort.SetText(std::to_string(listener.serverPort()));
    }

    // The first byte says which command is in flight; then come packets, each behind its length.
    void Run(std::string_view input)
    {
        constexpr CommandKind kinds[] = {CommandKind::None, CommandKind::List, CommandKind::Group, CommandKind::Body,
            CommandKind::Head, CommandKind::Next, CommandKind::Stat, CommandKind::Manual, CommandKind::AuthUser};
        if (input.empty() || !Session.TcpConnect())
            return;
        Session.ReplyState = ReplyState::Awaiting;
        Session.CommandKind = kinds[static_cast<unsigned char>(input.front()) % std::size(kinds)];
        rest = input.substr(1);
        idle = 0;
        feeder.start(0);
        while (idle < 4)
            WaitForEvents();
        feeder.stop();
        // Whatever came is held somewhere once, or thrown away.
        if (Session.RecvBuffer.Length() > 2 * input.size() + 64)
            std::abort();
        Session.TcpDisconnect();
        Session.StopFlag = false;
        DoEvents();
        delete std::exchange(server, nullptr);
    }

    void Feed()
    {
        if (rest.empty() || server == nullptr || server->state() != QAbstractSocket::ConnectedState) {
            ++idle;
            Session.StopFlag = true; // the user gives up
            return;
        }
        const std::size_t length = std::min<std::size_t>(1 + static_cast<unsigned char>(rest.front()), rest.size() - 1);
        server->write(rest.data() + 1, static_cast<qint64>(length));
        server->flush();
        rest.remove_prefix(length + 1);
    }

    QuietDesktop Desktop;
    frmTamarack MainForm;
    NewsSession Session{MainForm, Desktop};
    QTcpServer listener;
    QTcpSocket* server = nullptr;
    QTimer feeder;
    std::string_view rest;
    int idle = 0;
};

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    NeedApplication();
    static Client& client = *new Client;
    client.Run({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
