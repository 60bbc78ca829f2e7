#pragma once

#include "tests/support/ClientSide.h"
#include "tests/support/Script.h"

#include <QTcpServer>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QTcpSocket;

// A news server on 127.0.0.1 that plays a script (Script.h), in the thread of the test: it comes to its turn whenever
// the program under test waits for events. A client that leaves the script gets a 503 reply with the reason and is
// cut off, so that it does not wait for ever; the test finds the reason in FirstProblem().
class ScriptedServer {
public:
    explicit ScriptedServer(std::string_view script = {});
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    // The port it listens on. It has four digits, so that it fits the program's port field.
    std::uint16_t Port() const { return listener.serverPort(); }

    // Puts a script behind the one that is being played. It goes on with the same connection, unless it begins with
    // "X: connect" or nothing was played before.
    void Play(std::string_view script);

    // Cuts every packet into pieces of that many bytes, 0 for none. A piece goes out when the client has taken the one
    // before and has come back to its event loop, so that the client sees each by itself.
    void SetPieceSize(std::size_t bytes) { pieceSize = bytes; }

    // How long a connection may do nothing at all before the client is taken for hung.
    void SetPatience(std::chrono::milliseconds duration) { patience.setInterval(duration); }

    // Called at "X: pause NAME", when the client has taken everything that was sent before. The script goes on when the
    // call returns. Without a handler it goes on at Continue().
    std::function<void(const std::string& name)> OnPause;
    bool IsPaused() const { return paused; }
    void Continue();

    // Connecting is refused from now on; the connection that is open stays.
    void StopListening() { listener.close(); }

    // True when the whole script has been played and nothing else has happened.
    bool Finished() const { return FirstProblem().empty(); }

    // What went against the script first, with the script's line, or what it still waits for; empty when Finished().
    std::string FirstProblem() const;

    // The lines that the client has sent, without their ends.
    const std::vector<std::string>& Received() const { return received; }

private:
    void Advance();
    bool PlayStep(const ScriptStep& step);
    bool TakeConnection();
    bool TakeLine(const ScriptStep& step);
    void SendNextPiece();
    void HangUp(bool reset);
    void ReadInput();
    void Disconnected();
    bool ClientIsAtRest();
    void Fail(const std::string& what);

    QTcpServer listener;
    QTcpSocket* connection = nullptr;
    QTimer nextPass; // goes round once with each pass of the event loop while something waits for the client
    QTimer patience;
    ClientSide client;

    std::deque<ScriptStep> steps; // a pause's handler may put more behind while one is in hand
    std::size_t next = 0; // the step in hand
    std::deque<std::string> packets; // still to be sent
    std::size_t pieceSize = 0;
    std::uint64_t sent = 0; // bytes, on this connection
    int passesAtRest = 0;
    bool paused = false;
    std::string input;
    std::vector<std::string> received;
    std::string problem;
};
