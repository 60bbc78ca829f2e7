#include "benchmarks/SideBySide.h"
#include "catalogue/GroupStore.h"
#include "demo/sample/Loopback.h"
#include "demo/sample/NewsClient.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Events.h"

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

// The reply of this many bytes to LIST, and a little more.
std::string ListOf(std::size_t textSize)
{
    const std::string line = "alt.kites.over.the.harbour.pictures 0000012345 0000000001 y\r\n";
    std::string reply = "215 list follows\r\n";
    reply.reserve(textSize + 128);
    while (reply.size() < textSize)
        reply += line;
    return reply + ".\r\n";
}

// Answers every line of any client with the same reply, from a thread of its own.
class LargeReplyServer {
public:
    explicit LargeReplyServer(std::string newReply, Wire newWire = Wire::Plain)
        : reply(std::move(newReply))
        , wire(newWire)
    {
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

    std::uint16_t Port() const { return port; }
    Wire How() const { return wire; }
    std::size_t ReplySize() const { return reply.size(); }

private:
    void Serve(int client) const
    {
        const int on = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Channel channel(client, wire == Wire::Encrypted ? &identity : nullptr);
        (void)channel.Send("200 ready\r\n");
        char line[256];
        while (channel.Read(line, sizeof line) > 0) {
            for (std::size_t sent = 0; sent < reply.size(); sent += writeSize) {
                if (!channel.Send(std::string_view(reply).substr(sent, writeSize)))
                    return;
            }
        }
    }

    const std::string reply;
    const Wire wire;
    const Identity identity;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t port = 0;
    std::thread thread;
};

// The session on the main form, for that server.
struct Client {
    explicit Client(const LargeReplyServer& server)
    {
        mainForm.cboNewsServer.AddItem("127.0.0.1");
        mainForm.cboNewsServer.SetListIndex(0);
        mainForm.txtPort.SetText(std::to_string(server.Port()));
        if (server.How() == Wire::Encrypted)
            mainForm.TCP1.SecurePorts = {server.Port()};
        mainForm.TCP1.AcceptCertificate = [](const Certificate&, const std::function<bool()>&) { return true; };
    }

    frmTamarack mainForm;
    Desktop desktop;
    NewsSession session{mainForm, desktop};
};

std::optional<double> RunSession(const LargeReplyServer& server)
{
    Client client(server);
    std::size_t received = 0;
    client.session.GroupListArrived = [&received](const std::string& text) { received = text.size(); };
    if (!client.session.TcpConnect())
        return std::nullopt;
    return Timed([&] {
        client.session.CmdList();
        return received + 32 >= server.ReplySize();
    });
}

std::optional<double> RunRecv(const LargeReplyServer& server)
{
    NewsClient client(server.Port(), server.How());
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

// The bare client is a loop around OpenSSL's own read.
void ReceiveLargeReplyEncrypted(benchmark::State& state)
{
    const LargeReplyServer server(ListOf(wholeText), Wire::Encrypted);
    for (auto _ : state)
        CompareSideBySide(state, rounds, [&] { return RunSession(server); },
            {"bare client", [&] { return RunRecv(server); }, Aim::OfItsSpeed, 0.8});
    state.SetBytesProcessed(wholeText);
}

void ReceiveLargeReply(benchmark::State& state)
{
    const LargeReplyServer server(ListOf(wholeText));
    for (auto _ : state)
        CompareSideBySide(state, rounds, [&] { return RunSession(server); },
            {"recv", [&] { return RunRecv(server); }, Aim::OfItsSpeed, 0.5});
    state.SetBytesProcessed(wholeText);
}

void ReceiverGrowth(benchmark::State& state)
{
    const LargeReplyServer whole(ListOf(wholeText));
    const LargeReplyServer tenth(ListOf(wholeText / 10));
    for (auto _ : state)
        CompareWithATenth(
            state, rounds, [&] { return RunSession(whole); }, [&] { return RunSession(tenth); });
    state.SetBytesProcessed(wholeText);
}

// A list of one group, and many more of them right behind it, which nobody has asked for; beside one list of as many
// bytes.
void SmallListsBehindTheReply(benchmark::State& state)
{
    constexpr std::size_t size = 1'500'000;
    std::string lists = "215 list follows\r\n";
    while (lists.size() < size)
        lists += "a.b 1 1 y\r\n.\r\n";
    const LargeReplyServer many(std::move(lists));
    const LargeReplyServer one(ListOf(size));
    const TemporaryFolder folder;
    const auto refresh = [&folder](const LargeReplyServer& server) -> std::optional<double> {
        Client client(server);
        NewsSession& session = client.session;
        session.AppDir = folder.Path();
        const GroupStore store(client.mainForm, session, client.desktop);
        std::size_t arrived = 0;
        session.DebugLog = [&arrived](const std::string& packet) { arrived += packet.size(); };
        if (!session.TcpConnect())
            return std::nullopt;
        session.DebugOn = true;
        return Timed([&] {
            session.CmdList();
            while (arrived < server.ReplySize())
                WaitForEvents();
            return client.mainForm.lstAllGroups.ListCount() > 0;
        });
    };
    for (auto _ : state)
        CompareSideBySide(
            state, 5, [&] { return refresh(many); }, {"one list", [&] { return refresh(one); }, Aim::TimesItsTime, 5});
    state.SetBytesProcessed(size);
}

BENCHMARK(ReceiveLargeReply)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReceiveLargeReplyEncrypted)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(SmallListsBehindTheReply)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReceiverGrowth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
