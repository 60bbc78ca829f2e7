#include "demo/sample/SampleServer.h"

#include "demo/sample/Loopback.h"
#include "demo/sample/SampleSession.h"

#include <algorithm>
#include <cctype>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

// RFC 3977 allows a command of 512 bytes; what is much longer is no command.
constexpr std::size_t longestCommand = 4096;

std::string WithoutBlanksAround(std::string_view text)
{
    static constexpr std::string_view blanks = " \t\r";
    const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
    return std::string(text.substr(first, text.find_last_not_of(blanks) + 1 - first));
}

}

SampleServer::SampleServer(SampleGroups groups)
    : SampleServer(std::move(groups), Options())
{
}

SampleServer::SampleServer(SampleGroups groups, Options serverOptions)
    : options(std::move(serverOptions))
    , current(std::make_shared<const SampleGroups>(std::move(groups)))
{
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    port = ListenOnLoopback(listener);
    if (port != 0)
        acceptor = std::thread([this] { Accept(); });
}

SampleServer::~SampleServer()
{
    {
        const std::lock_guard lock(mutex);
        stopping = true;
        for (const int descriptor : descriptors) {
            if (descriptor >= 0)
                shutdown(descriptor, SHUT_RDWR);
        }
    }
    shutdown(listener, SHUT_RDWR);
    if (acceptor.joinable())
        acceptor.join();
    // Nobody adds a connection any more.
    for (std::thread& connection : connections)
        connection.join();
    close(listener);
}

void SampleServer::Accept()
{
    for (;;) {
        const int descriptor = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex);
        if (descriptor < 0 || stopping) {
            if (descriptor >= 0)
                close(descriptor);
            return;
        }
        const std::size_t place = descriptors.size();
        descriptors.push_back(descriptor);
        connections.emplace_back([this, descriptor, place] {
            Serve(descriptor);
            const std::lock_guard closing(mutex);
            descriptors[place] = -1;
            close(descriptor);
        });
    }
}

void SampleServer::Serve(int descriptor)
{
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (!SendAll(descriptor, "201 ready, posting is not allowed\r\n"))
        return;

    SampleSession session(options.user, options.password, [this] { return Groups(); });
    std::string input;
    char packet[4096];
    for (;;) {
        const std::size_t end = input.find('\n');
        if (end == input.npos) {
            const ssize_t received = recv(descriptor, packet, sizeof packet, 0);
            if (received <= 0 || input.size() > longestCommand)
                return;
            input.append(packet, static_cast<std::size_t>(received));
            continue;
        }
        const std::string line = WithoutBlanksAround(std::string_view(input).substr(0, end));
        input.erase(0, end + 1);
        const std::size_t blank = std::min(line.find(' '), line.size());
        std::string name = line.substr(0, blank);
        std::transform(name.begin(), name.end(), name.begin(),
            [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        const std::string argument = WithoutBlanksAround(std::string_view(line).substr(blank));

        Note({name, argument});
        const SampleSession::Reply reply = session.Answer(name, argument);
        if (name == "body")
            std::this_thread::sleep_for(options.bodyTime);
        const std::string_view bytes = reply.bytes;
        const std::size_t firstWrite
            = options.replies == Replies::StatusLineFirst ? bytes.find('\n') + 1 : bytes.size();
        if (!SendAll(descriptor, bytes.substr(0, firstWrite)) || !SendAll(descriptor, bytes.substr(firstWrite)))
            return;
        if (reply.hangUp)
            return;
    }
}

std::shared_ptr<const SampleGroups> SampleServer::Groups() const
{
    const std::lock_guard lock(mutex);
    return current;
}

void SampleServer::SetGroups(SampleGroups groups)
{
    auto latest = std::make_shared<const SampleGroups>(std::move(groups));
    const std::lock_guard lock(mutex);
    current.swap(latest);
}

void SampleServer::Note(Command command)
{
    const std::lock_guard lock(mutex);
    log.push_back(std::move(command));
}

std::vector<SampleServer::Command> SampleServer::Log() const
{
    const std::lock_guard lock(mutex);
    return log;
}

std::size_t SampleServer::CommandCount(std::string_view name) const
{
    const std::lock_guard lock(mutex);
    const auto count
        = std::count_if(log.begin(), log.end(), [&](const Command& command) { return command.name == name; });
    return static_cast<std::size_t>(count);
}

void SampleServer::ClearLog()
{
    const std::lock_guard lock(mutex);
    log.clear();
}

std::size_t SampleServer::ConnectionCount() const
{
    const std::lock_guard lock(mutex);
    return descriptors.size();
}
