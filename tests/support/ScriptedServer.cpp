#include "tests/support/ScriptedServer.h"

#include "demo/sample/Loopback.h"

#include <QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <linux/sockios.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

std::string WithoutEscapes(std::string text)
{
    for (std::size_t at = 0; (at = text.find('\\', at)) != text.npos; ++at) {
        const char kind = text.at(at + 1);
        const bool isNumber = kind == 'x';
        const int byte = isNumber ? std::stoi(text.substr(at + 2, 2), nullptr, 16)
            : kind == 'r'         ? '\r'
            : kind == 'n'         ? '\n'
                                  : ' ';
        text.replace(at, isNumber ? 4 : 2, 1, static_cast<char>(byte));
    }
    return text;
}

}

std::string Printable(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char written[8];
        std::snprintf(written, sizeof written, "\\x%02x", byte & 0xff);
        text += byte == '\n' ? "\\n" : byte >= ' ' && byte <= '~' ? std::string(1, byte) : written;
    }
    return text;
}

ScriptedServer::ScriptedServer(std::string_view script)
{
    nextPass.setSingleShot(true);
    patience.setSingleShot(true);
    patience.setInterval(20s);
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
    std::istringstream lines{std::string(script)};
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        if (line.empty())
            continue;
        Step step{line.substr(0, 2), line.erase(0, 3)};
        if (step.mark == "X:") {
            step.mark = step.text.substr(0, step.text.find(' '));
            step.text.erase(0, step.mark.size() + 1);
        } else {
            if (step.mark.ends_with('~'))
                step.text = WithoutEscapes(step.text);
            if (step.mark != "S~")
                step.text += "\r\n";
        }
        if (steps.empty() && step.mark != "connect")
            steps.push_back({"connect", ""});
        if (step.mark == "S:" && next < steps.size() && steps.back().mark == "S:")
            steps.back().text += step.text;
        else
            steps.push_back(std::move(step));
    }
    nextPass.start();
}

std::string ScriptedServer::StepInHand() const
{
    return next == steps.size() ? "behind the last step"
                                : "step " + std::to_string(next) + " ("
            + Printable((steps[next].mark + " " + steps[next].text).substr(0, 60)) + ")";
}

std::string ScriptedServer::FirstProblem() const
{
    return !problem.empty() || next == steps.size() ? problem : StepInHand() + " was not reached or not answered";
}

// Plays as much as can be played now. Whatever happens on the connection comes back here.
void ScriptedServer::Advance()
{
    if (connection)
        patience.start();
    while (problem.empty() && !paused && next < steps.size() && PlayStep(steps[next]))
        ++next;
    if (next < steps.size())
        return;
    if (!input.empty())
        Fail("the client sent " + Printable(input));
    else if (!connection && listener.hasPendingConnections())
        Fail("the client connected again");
}

// False if the step is not finished, or has gone wrong.
bool ScriptedServer::PlayStep(Step& step)
{
    if (step.mark == "connect")
        return TakeConnection();
    if (step.mark[0] == 'C')
        return TakeLine(step.text);
    if (step.mark[0] == 'S')
        return SendPiece(step.text);
    if (step.mark == "pause") {
        if (!ClientIsAtRest())
            return false;
        paused = true;
        OnPause(step.text);
        paused = false;
    } else if (step.mark == "close")
        HangUp();
    else if (step.mark == "wait-close") {
        if (!input.empty())
            Fail("the client sent " + Printable(input));
        return !connection;
    } else if (step.mark != "packet")
        Fail("this is no step");
    return problem.empty();
}

bool ScriptedServer::TakeConnection()
{
    // The client's new connection may be seen before the end of its old one.
    if (connection || !listener.hasPendingConnections())
        return false;
    connection = listener.nextPendingConnection();
    connection->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    input.clear();
    QObject::connect(connection, &QTcpSocket::readyRead, connection, [this] { ReadInput(); });
    QObject::connect(connection, &QTcpSocket::disconnected, connection, [this] { ReadInput(); });
    // What has come or gone before the signals were connected is found on the next pass.
    QTimer::singleShot(0, connection, [this] { ReadInput(); });
    patience.start();
    return true;
}

bool ScriptedServer::TakeLine(const std::string& expected)
{
    const std::size_t end = input.find('\n');
    if (end == input.npos) {
        if (!connection)
            Fail("the client has gone after " + Printable(input));
        return false;
    }
    const std::string line = input.substr(0, end + 1);
    input.erase(0, end + 1);
    if (line != expected)
        Fail("the client sent " + Printable(line));
    return line == expected;
}

// True when all that was sent has arrived, and the client has had some passes of its event loop to act on it.
bool ScriptedServer::ClientIsAtRest()
{
    // The bytes leave the socket in one pass and are handed on by a posted event in a later one.
    constexpr int passesForADelivery = 4;
    int onTheirWay = 0;
    if (!connection
        || (ioctl(static_cast<int>(connection->socketDescriptor()), SIOCOUTQ, &onTheirWay) == 0 && onTheirWay == 0
            && ++passesAtRest > passesForADelivery))
        return true;
    nextPass.start();
    return false;
}

bool ScriptedServer::SendPiece(std::string& text)
{
    // What is sent to a client that has gone is lost; it is for the steps behind to say whether it may have gone.
    if (!connection || text.empty())
        return true;
    if (!ClientIsAtRest())
        return false;
    const std::size_t size = pieceSize == 0 ? text.size() : std::min(pieceSize, text.size());
    connection->write(text.data(), static_cast<qint64>(size));
    connection->flush();
    passesAtRest = 0;
    text.erase(0, size);
    nextPass.start();
    return text.empty();
}

void ScriptedServer::HangUp()
{
    if (QTcpSocket* const socket = std::exchange(connection, nullptr)) {
        socket->disconnect();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        socket->disconnectFromHost();
    }
    input.clear();
    patience.stop();
}

// Something has come, or the client has gone.
void ScriptedServer::ReadInput()
{
    if (!connection)
        return;
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
    problem = StepInHand() + ": " + what;
    listener.close();
    if (connection)
        connection->write(("503 " + problem + "\r\n").c_str());
    HangUp();
}
