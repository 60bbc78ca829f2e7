#pragma once

#include <string>
#include <string_view>
#include <vector>

class QSslSocket;

// The certificate with which the other side of an encrypted connection has shown who it is, and what is wrong with it.
// All texts in it are the other side's and may say anything; each is one line of bounded length.
class Certificate {
public:
    // That of a connection to `server`, whose handshake is done.
    Certificate(const QSslSocket& connection, std::string server);

    // The name, or the address, that was connected to.
    const std::string& Server() const { return server; }

    // Who it was made for: one name.
    const std::string& Subject() const { return subject; }

    // Its SHA-256 in pairs of hexadecimal digits, "0A:1B:..."; empty if the other side has shown no certificate.
    const std::string& Fingerprint() const { return fingerprint; }

    // Whether the system vouches for it: issued for this server by somebody whom the system knows, and valid today.
    bool IsTrusted() const { return !fingerprint.empty() && faults.empty(); }

    // What the user has to know before they trust it all the same, as the text of a message box. `trustedBefore` is the
    // fingerprint of the certificate that they have trusted for this server until now, or empty.
    std::string Question(std::string_view trustedBefore) const;

private:
    std::string server;
    std::string subject;
    std::string names; // all those that it was made for
    std::string issuer;
    std::string validity;
    std::string fingerprint;
    std::vector<std::string> faults; // a sentence each
};
