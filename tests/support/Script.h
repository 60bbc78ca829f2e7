#pragma once

#include <string>
#include <string_view>
#include <vector>

// The script of a news server, one step a line:
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
// "C~" and "S~" read \r \n \t \\ \s (a blank) and \xHH. Blanks before a step, empty lines and lines that begin with
// "#" are skipped. `S:` lines that follow each other are one packet.
struct ScriptStep {
    enum class Kind { Connect, Expect, Send, SendRaw, Packet, Pause, Close, Reset, Stall, WaitClose, Unreadable };

    Kind kind;
    std::string text; // the client's line without its end, the bytes to send, a pause's name, an unreadable line
    int line; // of the script, from 1
};

[[nodiscard]] std::vector<ScriptStep> ReadScript(std::string_view script);

// "script line 7 (C: next)", for reports.
[[nodiscard]] std::string Describe(const ScriptStep& step);

// The bytes with everything but printable ASCII written as in "S~".
[[nodiscard]] std::string Printable(std::string_view bytes);
