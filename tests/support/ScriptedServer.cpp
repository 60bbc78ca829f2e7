#include "tests/support/ScriptedServer.h"

#include "demo/sample/Loopback.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

std::string WithoutEscapes(std::string_view text)
{
    std::string bytes;
    while (!text.empty()) {
        std::size_t length = 1;
        char byte = text.front();
        if (byte == '\\' && text.size() > 1) {
            length = text[1] == 'x' ? 4 : 2;
            const char* const letters = "rns";
            const char* const letter = std::char_traits<char>::find(letters, 3, text[1]);
            byte = length == 4      ? static_cast<char>(std::stoi(std::string(text.substr(2, 2)), nullptr, 16))
                : letter != nullptr ? "\r\n "[letter - letters]
                                    : text[1];
        }
        bytes += byte;
        text.remove_prefix(length);
    }
    return bytes;
}

std::uint16_t PortOf(int descriptor, int (*name)(int, sockaddr*, socklen_t*))
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    const bool known = name(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    return known && address.sin_family == AF_INET ? ntohs(address.sin_port) : std::uint16_t{0};
}

}

std::string Printable(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char written[8];
        if (byte == '\r' || byte == '\n')
            text += byte == '\r' ? "\\r" : "\\n";
        else if (byte >= ' ' && byte <= '~')
            text += byte;
        else
            text.append(
                written, static_cast<std::size_t>(std::snprintf(written, sizeof written, "\\x%02x", byte & 0xff)));
    }
    return text;
}

ScriptedServer::ScriptedServer(std::string_view script)
{
    nextPass.setSingleShot(true);
    patience.setSingleShot(true);
    SetPatience(20s);
    QObject::connect(&nextPass, &QTimer::timeout, &listener, [this] { Advance(); });
    QObject::connect(&patience, &QTimer::timeout, &listener, [this] { Fail("nothing has happened for a long time"); });
    QObject::connect(&listener, &QTcpServer::newConnection, &listener, [this] { Advance(); });
    const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (ListenOnLoopback(listening) == 0 || !listener.setSocketDescriptor(listening))
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
    int number = 0;
    while (!script.empty()) {
        const std::size_t end = script.find('\n');
        std::string_view line = script.substr(0, end);
        script.remove_prefix(end == script.npos ? script.size() : end + 1);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        ++number;
        if (line.empty() || line.front() == '#')
            continue;
        Step step{std::string(line.substr(0, 2)), std::string(line.substr(std::min<std::size_t>(3, line.size()))),
            "script line " + std::to_string(number) + " (" + Printable(line.substr(0, 60)) + ")"};
        if (step.mark == "X:") {
            const std::size_t blank = std::min(step.text.find(' '), step.text.size());
            step.mark = step.text.substr(0, blank);
            step.text.erase(0, blank + 1);
        } else if (step.mark.ends_with('~'))
            step.text = WithoutEscapes(step.text);
        if (step.mark == "C:" || step.mark == "C~" || step.mark == "S:")
            step.text += "\r\n";
        if (steps.empty() && step.mark != "connect")
            steps.push_back({"connect", "", step.source});
        steps.push_back(std::move(step));
    }
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
    const bool stalledAtTheEnd = next + 1 == steps.size() && steps[next].mark == "stall" && !paused;
    if (next < steps.size() && !stalledAtTheEnd)
        return steps[next].source + " was not reached or not answered";
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
bool ScriptedServer::PlayStep(const Step& step)
{
    if (step.mark == "connect")
        return TakeConnection();
    if (step.mark == "C:" || step.mark == "C~")
        return TakeLine(step);
    if (step.mark == "S:" || step.mark == "S~") {
        // What is sent to a client that has gone is lost; it is for the steps behind to say whether it may have gone.
        if (!connection || step.text.empty())
            return true;
        packets.push_back(step.text);
        // The lines behind this one belong to the same packet.
        while (step.mark == "S:" && next + 1 < steps.size() && steps[next + 1].mark == "S:")
            packets.back() += steps[++next].text;
        return true;
    }
    if (step.mark == "packet")
        return true;
    if (step.mark == "pause") {
        if (!ClientIsAtRest())
            return false;
        paused = true;
        if (OnPause) {
            OnPause(step.text);
            Continue();
        }
        return false;
    }
    if (step.mark == "close" || step.mark == "reset") {
        // A reset would take away what the client has not read yet.
        const bool reset = step.mark == "reset";
        if (reset && !ClientIsAtRest())
            return false;
        HangUp(reset);
        return true;
    }
    if (step.mark == "stall")
        input.clear();
    else if (step.mark != "wait-close")
        Fail("this is no step");
    else if (!input.empty())
        Fail("the client sent " + Printable(input));
    return !connection;
}

bool ScriptedServer::TakeConnection()
{
    // The client's new connection may be seen before the end of its old one.
    if (connection || !listener.hasPendingConnections())
        return false;
    connection = listener.nextPendingConnection();
    connection->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    for (client = 4096; client >= 0; --client) {
        if (PortOf(client, getsockname) == connection->peerPort() && PortOf(client, getpeername) == Port())
            break;
    }
    sent = 0;
    input.clear();
    QObject::connect(connection, &QTcpSocket::readyRead, connection, [this] { ReadInput(); });
    QObject::connect(connection, &QTcpSocket::disconnected, connection, [this] { ReadInput(); });
    patience.start();
    // What has come or gone before the signals were connected is found on the next pass.
    QTimer::singleShot(0, connection, [this] {
        if (connection)
            ReadInput();
    });
    return true;
}

bool ScriptedServer::TakeLine(const Step& step)
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
    if (line == step.text)
        return true;
    Fail("the client sent " + Printable(line));
    return false;
}

// True when all that was sent has arrived and has been read out of the client's socket, and also when that is not found
// in this process (any more).
bool ScriptedServer::ClientHasRead() const
{
    tcp_info info{};
    socklen_t length = sizeof info;
    int waiting = 0;
    return PortOf(client, getsockname) != connection->peerPort()
        || getsockopt(client, IPPROTO_TCP, TCP_INFO, &info, &length) != 0 || ioctl(client, FIONREAD, &waiting) != 0
        || (info.tcpi_bytes_received >= sent && waiting == 0);
}

// True when the client has taken everything that was sent, and has had some passes of its event loop to act on it.
bool ScriptedServer::ClientIsAtRest()
{
    // The bytes leave the socket in one pass and are handed on by a posted event in a later one.
    constexpr int passesForADelivery = 3;
    if (!connection)
        return true;
    passesAtRest = ClientHasRead() ? passesAtRest + 1 : 0;
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

// Something has come, or the client has gone.
void ScriptedServer::ReadInput()
{
    input += connection->readAll().toStdString();
    if (connection->state() == QAbstractSocket::UnconnectedState) {
        std::exchange(connection, nullptr)->deleteLater();
        patience.stop();
    }
    Advance();
}

void ScriptedServer::Fail(const std::string& what)
{
    if (!problem.empty())
        return;
    problem = (next < steps.size() ? steps[next].source : "end of the script") + ": " + what;
    packets.clear();
    listener.close();
    if (connection) {
        connection->write(("503 " + problem + "\r\n").c_str());
        HangUp(false);
    }
}
