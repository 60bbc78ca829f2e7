#pragma once

#include <memory>
#include <string>
#include <vector>

struct evp_pkey_st;
struct x509_st;

// Who a server claims to be in an encrypted connection: a certificate, made on the spot, and its key.
class Identity {
public:
    struct Wishes {
        std::vector<std::string> names{"DNS:localhost", "IP:127.0.0.1"}; // the first is the common name as well
        int validFrom = -1; // in days from today
        int validUntil = 30;
        const Identity* issuer = nullptr; // none: it signs itself
        bool isAuthority = false; // may issue others
    };

    Identity();
    explicit Identity(const Wishes& wishes);

    // In the text form PEM.
    std::string Certificate() const;
    std::string Key() const;

    // SHA-256 in pairs of hexadecimal digits: "0A:1B:...".
    std::string Fingerprint() const;

    // What an encrypted connection is served with.
    x509_st* Handle() const { return certificate.get(); }
    evp_pkey_st* KeyHandle() const { return key.get(); }

private:
    struct Free {
        void operator()(evp_pkey_st* pointer) const;
        void operator()(x509_st* pointer) const;
    };

    std::unique_ptr<evp_pkey_st, Free> key;
    std::unique_ptr<x509_st, Free> certificate;
};
