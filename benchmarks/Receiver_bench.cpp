#include "benchmarks/BareClient.h"
#include "benchmarks/SideBySide.h"
#include "sample/Loopback.h"
#include "session/NewsSession.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

// The list command of the session, with the receiver inside its wait, on one large multi-line reply, beside plain recv
// of the same reply into memory that is large enough for it.

namespace {

constexpr std::size_t wholeText = 100 * 1000 * 1000;
constexpr std::size_t writeSize = 16 * 1024;
constexpr int rounds = 15;

// Answers every line of any client with the same reply, from a thread of its own.
class LargeReplyServer {
public:
    explicit LargeReplyServer(std::size_t size)
        : textSize(size)
        , reply("215 list follows\r\n")
    {
        const std::string line = "alt.kites.over.the.harbour.pictures 0000012345 0000000001 y";
        const std::size_t textEnd = reply.size() + textSize;
        reply.reserve(textEnd + 16);
        while (reply.size() < textEnd)
            reply.append(line).append("\r\n");
        reply += ".\r\n";
        port = ListenOnLoopback(listener);
        thread = std::thread([this] {
            for (int client; (client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0; close(client))
                Serve(client);
        });
    }
    ~LargeReplyServer()
    {
        shutdown(listener, SHUT_RDWR);
        thread.join();
        close(listener);
    }
    LargeReplyServer(const LargeReplyServer&) = delete;
    LargeReplyServer& operator=(const LargeReplyServer&) = delete;

    int Port() const { return port; }
    std::size_t TextSize() const { return textSize; }
    std::size_t ReplySize() const { return reply.size(); }

private:
    void Serve(int client) const
    {
        const int on = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        (void)send(client, "200 ready\r\n", 11, MSG_NOSIGNAL);
        char line[256];
        while (recv(client, line, sizeof line, 0) > 0) {
            for (std::size_t sent = 0; sent < reply.size();) {
                const ssize_t count
                    = send(client, reply.data() + sent, std::min(writeSize, reply.size() - sent), MSG_NOSIGNAL);
                if (count <= 0)
                    return;
                sent += static_cast<std::size_t>(count);
            }
        }
    }

    const std::size_t textSize;
    std::string reply;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port = 0;
    std::thread thread;
};

std::optional<double> RunSession(const LargeReplyServer& server)
{
    frmTamarack mainForm;
    Desktop desktop;
    NewsSession session(mainForm, desktop);
    mainForm.cboNewsServer.AddItem("127.0.0.1");
    mainForm.cboNewsServer.SetListIndex(0);
    mainForm.txtPort.SetText(std::to_string(server.Port()));
    std::size_t received = 0;
    session.GroupListArrived = [&received](const std::string& text) { received = text.size(); };
    if (!session.TcpConnect())
        return std::nullopt;
    return Timed([&] {
        session.CmdList();
        return received >= server.TextSize() - 2;
    });
}

std::optional<double> RunRecv(const LargeReplyServer& server)
{
    BareClient client(server.Port());
    const auto memory = std::make_unique_for_overwrite<char[]>(server.ReplySize());
    return Timed([&] {
        if (!client.Send("list"))
            return false;
        std::size_t received = 0;
        while (received < server.ReplySize()) {
            const std::size_t count = client.Read(memory.get() + received, server.ReplySize() - received);
            if (count == 0)
                return false;
            received += count;
        }
        return true;
    });
}

void ReceiveLargeReply(benchmark::State& state)
{
    const LargeReplyServer server(wholeText);
    for (auto _ : state)
        CompareSideBySide(state, rounds, [&] { return RunSession(server); },
            {"recv", [&] { return RunRecv(server); }, Aim::OfItsSpeed, 0.5});
    state.SetBytesProcessed(wholeText);
}

void ReceiverGrowth(benchmark::State& state)
{
    const LargeReplyServer whole(wholeText);
    const LargeReplyServer tenth(wholeText / 10);
    for (auto _ : state)
        CompareWithATenth(
            state, rounds, [&] { return RunSession(whole); }, [&] { return RunSession(tenth); });
    state.SetBytesProcessed(wholeText);
}

BENCHMARK(ReceiveLargeReply)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReceiverGrowth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
