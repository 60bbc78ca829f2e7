#include "tests/support/ScriptedServer.h"

#include "demo/sample/ShortPort.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <algorithm>
#include <sys/socket.h>
#include <utility>

using Kind = ScriptStep::Kind;
using namespace std::chrono_literals;

ScriptedServer::ScriptedServer(std::string_view script)
{
    nextPass.setSingleShot(true);
    patience.setSingleShot(true);
    SetPatience(20s);
    QObject::connect(&nextPass, &QTimer::timeout, &listener, [this] { Advance(); });
    QObject::connect(&patience, &QTimer::timeout, &listener, [this] { Fail("nothing has happened for a long time"); });
    QObject::connect(&listener, &QTcpServer::newConnection, &listener, [this] { Advance(); });
    if (ListenOnShortPort([this](std::uint16_t port) { return listener.listen(QHostAddress::LocalHost, port); }) == 0)
        Fail("no port to listen on");
    Play(script);
}

ScriptedServer::~ScriptedServer()
{
    if (connection)
        connection->disconnect();
}

void ScriptedServer::Play(std::string_view script)
{
    std::vector<ScriptStep> more = ReadScript(script);
    if (steps.empty() && !more.empty() && more.front().kind != Kind::Connect)
        steps.push_back({Kind::Connect, "", more.front().line});
    std::move(more.begin(), more.end(), std::back_inserter(steps));
    nextPass.start();
}

void ScriptedServer::Continue()
{
    if (!paused)
        return;
    paused = false;
    ++next;
    nextPass.start();
}

std::string ScriptedServer::FirstProblem() const
{
    if (!problem.empty())
        return problem;
    if (!packets.empty())
        return "the client did not take all of what was sent";
    const bool stalledAtTheEnd = next + 1 == steps.size() && steps[next].kind == Kind::Stall && !paused;
    if (next < steps.size() && !stalledAtTheEnd)
        return Describe(steps[next]) + " was not reached or not answered";
    return {};
}

// Plays as much as can be played now. Whatever happens on the connection comes back here.
void ScriptedServer::Advance()
{
    if (connection)
        patience.start();
    while (problem.empty() && !paused) {
        if (!packets.empty()) {
            SendNextPiece();
            if (!packets.empty())
                return;
        }
        if (next == steps.size()) {
            if (!input.empty())
                Fail("after the end of the script the client sent " + Printable(input));
            else if (!connection && listener.hasPendingConnections())
                Fail("after the end of the script the client connected again");
            return;
        }
        if (!PlayStep(steps[next]))
            return;
        ++next;
    }
}

// False if the step is not finished, or has gone wrong.
bool ScriptedServer::PlayStep(const ScriptStep& step)
{
    switch (step.kind) {
    case Kind::Connect:
        return TakeConnection();
    case Kind::Expect:
        return TakeLine(step);
    case Kind::Send:
        // What is sent to a client that has gone is lost; it is for the steps behind to say whether it may have gone.
        if (!connection)
            return true;
        packets.push_back(step.text);
        // The lines behind this one belong to the same packet.
        while (next + 1 < steps.size() && steps[next + 1].kind == Kind::Send)
            packets.back() += steps[++next].text;
        return true;
    case Kind::SendRaw:
        if (connection && !step.text.empty())
            packets.push_back(step.text);
        return true;
    case Kind::Packet:
        return true;
    case Kind::Pause:
        if (!ClientIsAtRest())
            return false;
        paused = true;
        if (OnPause) {
            OnPause(step.text);
            Continue();
        }
        return false;
    case Kind::Close:
        HangUp(false);
        return true;
    case Kind::Reset:
        // A reset would take away what the client has not read yet.
        if (!ClientIsAtRest())
            return false;
        HangUp(true);
        return true;
    case Kind::Stall:
        input.clear();
        return !connection;
    case Kind::WaitClose:
        if (!input.empty())
            Fail("the client sent " + Printable(input));
        return !connection;
    case Kind::Unreadable:
        break;
    }
    Fail("this is no step");
    return false;
}

bool ScriptedServer::TakeConnection()
{
    // The client's new connection may be seen before the end of its old one.
    if (connection || !listener.hasPendingConnections())
        return false;
    connection = listener.nextPendingConnection();
    connection->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    client.Attach(connection->peerPort(), listener.serverPort());
    sent = 0;
    input.clear();
    QObject::connect(connection, &QTcpSocket::readyRead, connection, [this] { ReadInput(); });
    QObject::connect(connection, &QTcpSocket::disconnected, connection, [this] { Disconnected(); });
    patience.start();
    // What has come or gone before the signals were connected is found on the next pass.
    QTimer::singleShot(0, connection, [this] {
        if (!connection)
            return;
        ReadInput();
        if (connection && connection->state() == QAbstractSocket::UnconnectedState)
            Disconnected();
    });
    return true;
}

bool ScriptedServer::TakeLine(const ScriptStep& step)
{
    const std::size_t end = input.find('\n');
    if (end == input.npos) {
        if (!connection)
            Fail(input.empty() ? "the client has gone" : "the client has gone after " + Printable(input));
        return false;
    }
    const std::string line = input.substr(0, end + 1);
    input.erase(0, end + 1);
    received.push_back(line.substr(0, line.find_last_not_of("\r\n") + 1));
    if (line == step.text + "\r\n")
        return true;
    Fail("the client sent " + Printable(line));
    return false;
}

// True when the client has taken everything that was sent, and has had some passes of its event loop to act on it.
bool ScriptedServer::ClientIsAtRest()
{
    // The bytes leave the socket in one pass and are handed on by a posted event in a later one.
    constexpr int passesForADelivery = 3;
    if (!connection)
        return true;
    passesAtRest = client.HasRead(sent) ? passesAtRest + 1 : 0;
    if (passesAtRest > passesForADelivery)
        return true;
    nextPass.start();
    return false;
}

void ScriptedServer::SendNextPiece()
{
    if (!connection) {
        packets.clear();
        return;
    }
    if (!ClientIsAtRest())
        return;
    std::string& packet = packets.front();
    const std::size_t size = pieceSize == 0 ? packet.size() : std::min(pieceSize, packet.size());
    connection->write(packet.data(), static_cast<qint64>(size));
    connection->flush();
    sent += size;
    passesAtRest = 0;
    packet.erase(0, size);
    if (packet.empty())
        packets.pop_front();
    if (!packets.empty())
        nextPass.start();
}

void ScriptedServer::HangUp(bool reset)
{
    if (!connection)
        return;
    QTcpSocket* socket = std::exchange(connection, nullptr);
    socket->disconnect();
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    input.clear();
    patience.stop();
    if (reset) {
        const linger atOnce{1, 0};
        setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        socket->abort();
    } else {
        socket->flush();
        socket->disconnectFromHost();
    }
}

void ScriptedServer::ReadInput()
{
    input += connection->readAll().toStdString();
    Advance();
}

void ScriptedServer::Disconnected()
{
    input += connection->readAll().toStdString();
    std::exchange(connection, nullptr)->deleteLater();
    patience.stop();
    Advance();
}

void ScriptedServer::Fail(const std::string& what)
{
    if (!problem.empty())
        return;
    problem = (next < steps.size() ? Describe(steps[next]) : "end of the script") + ": " + what;
    packets.clear();
    listener.close();
    if (connection) {
        connection->write(("503 " + problem + "\r\n").c_str());
        HangUp(false);
    }
}
