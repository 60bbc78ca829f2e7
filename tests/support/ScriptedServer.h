#pragma once

#include <QTcpServer>
#include <QTimer>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

class QTcpSocket;

// A news server on 127.0.0.1 that plays a script, one step a line, in the thread of the test: it comes to its turn
// whenever the program under test waits for events.
//
//   C: group alt.kites                    the client is to send this line
//   S: 211 42 7001 7055 alt.kites         the server sends this line; CR LF is added
//   S~ 211 42 70                          the server sends this text with nothing added, in a packet of its own
//   X: packet                             what is sent next does not share a packet with what was sent before
//   X: pause NAME                         OnPause is called with that name, and may do something just here
//   X: close                              the server hangs up
//   X: wait-close                         the client is to close the connection, without another line
//   X: connect                            the client is to connect once more
//
// "C~" and "S~" read \r \n \s (a blank) and \xHH. Blanks before a step and empty lines are skipped. `S:` lines that
// follow each other are one packet. A client that leaves the script gets a 503 reply with the reason and is cut off, so
// that it does not wait for ever; the test finds the reason in FirstProblem().
class ScriptedServer {
public:
    explicit ScriptedServer(std::string_view script = {});
    ~ScriptedServer();

    // The port it listens on. It has four digits, so that it fits the program's port field.
    std::uint16_t Port() const { return listener.serverPort(); }

    // Puts a script behind the one that is being played. It goes on with the same connection, unless it begins with
    // "X: connect" or nothing was played before.
    void Play(std::string_view script);

    // Cuts every packet into pieces of that many bytes, 0 for none. A piece goes out when the client has taken the one
    // before and has come back to its event loop, so that the client sees each by itself.
    void SetPieceSize(std::size_t bytes) { pieceSize = bytes; }

    // Called when the client has taken everything that was sent before. The script goes on when the call returns.
    std::function<void(const std::string& name)> OnPause = [](const std::string&) {};

    // Connecting is refused from now on; the connection that is open stays.
    void StopListening() { listener.close(); }

    // True when the whole script has been played and nothing else has happened.
    bool Finished() const { return FirstProblem().empty(); }

    // What went against the script first, with the step, or what it still waits for; empty when Finished().
    std::string FirstProblem() const;

private:
    struct Step {
        std::string mark; // "C:", "S:", "S~", or what "X:" does
        std::string text; // the client's line, the bytes that are still to be sent, or a pause's name
    };

    void Advance();
    bool PlayStep(Step& step);
    bool TakeConnection();
    bool TakeLine(const std::string& expected);
    bool SendPiece(std::string& text);
    bool ClientIsAtRest();
    void HangUp();
    void ReadInput();
    void Fail(const std::string& what);
    std::string StepInHand() const;

    QTcpServer listener;
    QTcpSocket* connection = nullptr;
    QTimer nextPass; // goes round once with each pass of the event loop while something waits for the client
    QTimer patience;

    std::deque<Step> steps; // a pause's handler may put more behind while one is in hand
    std::size_t next = 0; // the step in hand
    std::size_t pieceSize = 0;
    int passesAtRest = 0;
    bool paused = false;
    std::string input;
    std::string problem;
};

// The bytes with everything but printable ASCII written as in "S~".
[[nodiscard]] std::string Printable(std::string_view bytes);
