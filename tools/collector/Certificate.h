#pragma once

#include <memory>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <string>

namespace collector {

template <auto Free>
struct OpenSslDeleter
{
    template <class Object>
    void operator()(Object* object) const noexcept
    {
        Free(object);
    }
};
using CKeyPtr = std::unique_ptr<EVP_PKEY, OpenSslDeleter<&EVP_PKEY_free>>;
using CCertificatePtr = std::unique_ptr<X509, OpenSslDeleter<&X509_free>>;

// A certificate with its private key. Both are null when a file could not be read.
struct Identity
{
    CKeyPtr key;
    CCertificatePtr certificate;

    explicit operator bool() const { return key && certificate; }
};

// What a certificate is made for.
struct CertificateRequest
{
    std::string commonName;
    std::string alternativeNames; // "IP:127.0.0.1,DNS:localhost"; empty for an authority
    int validDays = 0;
};

// A new key and its certificate (RFC 5280), signed by `authority`, or by itself without one.
// Throws std::runtime_error.
Identity MakeIdentity(const CertificateRequest& request, const Identity* authority);

// True when key and certificate belong together, `authority` signed it (itself without one), and it
// stays valid for a day at least.
bool IsUsable(const Identity& identity, const Identity* authority);

// The key and the certificate as one text, and back. Reading anything else gives an empty identity.
std::string WritePem(const Identity& identity);
Identity ReadPem(const std::string& text);

std::string WriteCertificatePem(const X509& certificate);
std::string WriteCertificateDer(const X509& certificate);

} // namespace collector
