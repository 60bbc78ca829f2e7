#include "demo/sample/Identity.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdio>

namespace {

template <class Write> std::string Pem(Write write)
{
    BIO* const memory = BIO_new(BIO_s_mem());
    write(memory);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory, &text);
    std::string pem(text, static_cast<std::size_t>(length));
    BIO_free(memory);
    return pem;
}

void Extend(X509* certificate, int kind, const std::string& value)
{
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

}

void Identity::Free::operator()(evp_pkey_st* pointer) const { EVP_PKEY_free(pointer); }
void Identity::Free::operator()(x509_st* pointer) const { X509_free(pointer); }

Identity::Identity()
    : Identity(Wishes())
{
}

Identity::Identity(const Wishes& wishes)
    : key(EVP_EC_gen("P-256"))
    , certificate(X509_new())
{
    constexpr long day = 24 * 60 * 60;
    X509* const made = certificate.get();
    X509_set_version(made, X509_VERSION_3);
    std::int64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial - 1);
    ASN1_INTEGER_set_int64(X509_get_serialNumber(made), serial);
    X509_gmtime_adj(X509_getm_notBefore(made), wishes.validFrom * day);
    X509_gmtime_adj(X509_getm_notAfter(made), wishes.validUntil * day);
    X509_set_pubkey(made, key.get());

    // DNS:localhost   (kind, name)
    const std::string& first = wishes.names.front();
    const std::string name = first.substr(first.find(':') + 1);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(made), "CN", MBSTRING_UTF8,
        reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    std::string allNames;
    for (const std::string& each : wishes.names)
        allNames += (allNames.empty() ? "" : ",") + each;
    if (wishes.isAuthority)
        Extend(made, NID_basic_constraints, "critical,CA:TRUE");
    else
        Extend(made, NID_subject_alt_name, allNames);

    const Identity& issuer = wishes.issuer != nullptr ? *wishes.issuer : *this;
    X509_set_issuer_name(made, X509_get_subject_name(issuer.certificate.get()));
    X509_sign(made, issuer.key.get(), EVP_sha256());
}

std::string Identity::Certificate() const
{
    return Pem([this](BIO* memory) { PEM_write_bio_X509(memory, certificate.get()); });
}

std::string Identity::Key() const
{
    return Pem(
        [this](BIO* memory) { PEM_write_bio_PrivateKey(memory, key.get(), nullptr, nullptr, 0, nullptr, nullptr); });
}

std::string Identity::Fingerprint() const
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    X509_digest(certificate.get(), EVP_sha256(), digest, &length);
    std::string text;
    for (unsigned index = 0; index < length; ++index) {
        char pair[4];
        std::snprintf(pair, sizeof pair, index == 0 ? "%02X" : ":%02X", digest[index]);
        text += pair;
    }
    return text;
}
