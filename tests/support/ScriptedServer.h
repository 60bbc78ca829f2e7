#pragma once

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

// A news server on 127.0.0.1 that plays a script, one step a line, in the thread of the test: it comes to its turn
// whenever the program under test waits for events.
//
//   C: group alt.kites                    the client is to send this line
//   S: 211 42 7001 7055 alt.kites         the server sends this line; CR LF is added
//   S~ 211 42 70                          the server sends this text with nothing added, in a packet of its own
//   X: packet                             what is sent next does not share a packet with what was sent before
//   X: pause NAME                         the test is told, and does something just here
//   X: close                              the server hangs up
//   X: reset                              the server breaks the connection off
//   X: stall                              nothing more is said, and whatever comes is taken, until the client closes
//   X: wait-close                         the client is to close the connection, without another line
//   X: connect                            the client is to connect once more
//
// "C~" and "S~" read \r \n \\ \s (a blank) and \xHH. Blanks before a step, empty lines and lines that begin with "#"
// are skipped. `S:` lines that follow each other are one packet. A client that leaves the script gets a 503 reply with
// the reason and is cut off, so that it does not wait for ever; the test finds the reason in FirstProblem().
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
    struct Step {
        std::string mark; // "C:", "S:", "S~", or what "X:" does
        std::string text; // the client's line, the bytes to send, or a pause's name
        std::string source; // "script line 7 (C: next)", for reports
    };

    void Advance();
    bool PlayStep(const Step& step);
    bool TakeConnection();
    bool TakeLine(const Step& step);
    void SendNextPiece();
    void HangUp(bool reset);
    void ReadInput();
    bool ClientHasRead() const;
    bool ClientIsAtRest();
    void Fail(const std::string& what);

    QTcpServer listener;
    QTcpSocket* connection = nullptr;
    QTimer nextPass; // goes round once with each pass of the event loop while something waits for the client
    QTimer patience;

    std::deque<Step> steps; // a pause's handler may put more behind while one is in hand
    std::size_t next = 0; // the step in hand
    std::deque<std::string> packets; // still to be sent
    std::size_t pieceSize = 0;
    std::uint64_t sent = 0; // bytes, on this connection
    int client = -1; // the other end of the connection, in this process
    int passesAtRest = 0;
    bool paused = false;
    std::string input;
    std::vector<std::string> received;
    std::string problem;
};

// The bytes with everything but printable ASCII written as in "S~".
[[nodiscard]] std::string Printable(std::string_view bytes);
