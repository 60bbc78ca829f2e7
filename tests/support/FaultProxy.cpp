#include "tests/support/FaultProxy.h"

#include "demo/sample/Loopback.h"

#include <array>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace std::chrono_literals;

FaultProxy::FaultProxy(std::uint16_t portOfServer, const Identity* shownIdentity)
    : serverPort(portOfServer)
    , identity(shownIdentity)
    , listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , port(ListenOnLoopback(listener))
    , thread([this] { Run(); })
{
}

FaultProxy::~FaultProxy()
{
    stopping = true;
    shutdown(listener, SHUT_RDWR);
    thread.join();
    close(listener);
}

void FaultProxy::SetFault(const Fault& newFault)
{
    const std::lock_guard lock(mutex);
    fault = newFault;
    struck = false;
}

void FaultProxy::Run()
{
    while (!stopping) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            continue;
        const int on = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Serve(client);
        close(client);
    }
}

void FaultProxy::Serve(int descriptor)
{
    Fault now;
    {
        const std::lock_guard lock(mutex);
        now = fault;
    }
    passed = 0;
    const int serverDescriptor = ConnectToLoopback(serverPort);
    Channel client(descriptor, identity), server(serverDescriptor);
    std::array<char, 65536> bytes;
    for (bool open = serverDescriptor >= 0 && client.IsOpen(); open && !stopping;) {
        std::array<pollfd, 2> ends{pollfd{descriptor, POLLIN, 0}, pollfd{serverDescriptor, POLLIN, 0}};
        poll(ends.data(), ends.size(), client.HasPending() ? 0 : 50);
        if (ends[0].revents != 0 || client.HasPending()) {
            const std::size_t got = client.Read(bytes.data(), bytes.size());
            open = got > 0 && server.Send({bytes.data(), got});
        }
        if (open && ends[1].revents != 0) {
            const std::size_t got = server.Read(bytes.data(), bytes.size());
            open = got > 0 && PassOn(client, {bytes.data(), got}, now);
        }
    }
    if (serverDescriptor >= 0)
        close(serverDescriptor);
}

// False when the connection is over.
bool FaultProxy::PassOn(Channel& client, std::string_view bytes, const Fault& now)
{
    using enum Fault::Kind;
    const std::uint64_t before = passed;
    passed += bytes.size();
    if (now.kind == None || now.at < before || now.at >= passed)
        return client.Send(bytes);
    struck = now.kind == Split; // the first part may be all that the client waits for
    const std::size_t first = static_cast<std::size_t>(now.at - before);
    if (!client.Send(bytes.substr(0, first)))
        return false;
    if (now.kind == Split)
        std::this_thread::sleep_for(1ms);
    const linger reset{now.kind == Reset ? 1 : 0, 0};
    setsockopt(client.Descriptor(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    bool goesOn = now.kind != Close && now.kind != Reset;
    for (std::size_t time = 0; now.kind == Insert && goesOn && time < now.times; ++time)
        goesOn = client.Send(now.bytes);
    struck = true;
    while ((now.kind == Stall || now.thenStall) && goesOn) {
        pollfd end{client.Descriptor(), POLLIN, 0};
        goesOn = poll(&end, 1, 20) == 0 && !stopping;
    }
    return goesOn && client.Send(bytes.substr(first));
}
