#include "demo/sample/Channel.h"

#include "demo/sample/Loopback.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <csignal>
#include <limits>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

// Good for one connection.
SSL* NewTls(int descriptor, const SSL_METHOD* method, const Identity* identity, int protocol)
{
    // The library writes without a flag against it.
    std::signal(SIGPIPE, SIG_IGN);
    SSL_CTX* const context = SSL_CTX_new(method);
    if (identity != nullptr) {
        SSL_CTX_use_certificate(context, identity->Handle());
        SSL_CTX_use_PrivateKey(context, identity->KeyHandle());
    }
    if (protocol != 0) {
        SSL_CTX_set_min_proto_version(context, protocol);
        SSL_CTX_set_max_proto_version(context, protocol);
        SSL_CTX_set_cipher_list(context, "DEFAULT:@SECLEVEL=0"); // old ones are to be had too
    }
    SSL* const tls = SSL_new(context);
    SSL_CTX_free(context); // the connection holds it
    SSL_set_fd(tls, descriptor);
    return tls;
}

}

void Channel::Free::operator()(ssl_st* pointer) const { SSL_free(pointer); }

Channel::Channel(int socket, Wire wire)
    : descriptor(socket)
{
    if (wire == Wire::Plain)
        return;
    tls.reset(NewTls(descriptor, TLS_client_method(), nullptr, 0));
    AcknowledgeAtOnce();
    open = SSL_connect(tls.get()) == 1;
}

Channel::Channel(int socket, const Identity* identity, int protocol)
    : descriptor(socket)
{
    if (identity == nullptr)
        return;
    tls.reset(NewTls(descriptor, TLS_server_method(), identity, protocol));
    open = SSL_accept(tls.get()) == 1;
}

Channel::~Channel()
{
    if (tls && open)
        SSL_shutdown(tls.get());
}

std::size_t Channel::Read(char* memory, std::size_t size)
{
    const int most = static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
    const ssize_t count = !open ? 0 : tls ? SSL_read(tls.get(), memory, most) : recv(descriptor, memory, size, 0);
    AcknowledgeAtOnce();
    open = count > 0;
    return open ? static_cast<std::size_t>(count) : 0;
}

bool Channel::HasPending() const { return tls && SSL_pending(tls.get()) > 0; }

bool Channel::Send(std::string_view bytes)
{
    if (!tls)
        return SendAll(descriptor, bytes);
    std::size_t sent = 0;
    return bytes.empty() || (open && SSL_write_ex(tls.get(), bytes.data(), bytes.size(), &sent) == 1);
}

void Channel::RenewKeys()
{
    if (SSL_version(tls.get()) == TLS1_3_VERSION)
        SSL_key_update(tls.get(), SSL_KEY_UPDATE_REQUESTED);
    else
        SSL_renegotiate(tls.get());
    SSL_do_handshake(tls.get());
}

void Channel::AcknowledgeAtOnce() const
{
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}
