#include "tools/collector/Certificate.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace collector {

namespace {

using CBioPtr = std::unique_ptr<BIO, OpenSslDeleter<&BIO_free>>;
using CBignumPtr = std::unique_ptr<BIGNUM, OpenSslDeleter<&BN_free>>;
using CExtensionPtr = std::unique_ptr<X509_EXTENSION, OpenSslDeleter<&X509_EXTENSION_free>>;

constexpr long secondsPerDay = 24 * 60 * 60;

void Check(bool done, const char* step)
{
    if (done)
        return;
    ERR_clear_error();
    throw std::runtime_error(std::string("OpenSSL cannot ") + step);
}

// Clients tell two certificates of one issuer apart by the number alone, so it is a random one.
void SetSerialNumber(X509& certificate)
{
    const CBignumPtr number(BN_new());
    Check(number && BN_rand(number.get(), 127, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) == 1 &&
              BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(&certificate)) != nullptr,
          "make a serial number");
}

void SetNames(X509& certificate, const std::string& commonName, const Identity* authority)
{
    X509_NAME* subject = X509_get_subject_name(&certificate);
    Check(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>(commonName.c_str()), -1,
                                     -1, 0) == 1 &&
              X509_set_issuer_name(&certificate,
                                   authority ? X509_get_subject_name(authority->certificate.get())
                                             : subject) == 1,
          "name a certificate");
}

void AddExtension(X509& certificate, X509* issuer, int nid, const std::string& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, &certificate, nullptr, nullptr, 0);
    const CExtensionPtr extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    Check(extension && X509_add_ext(&certificate, extension.get(), -1) == 1,
          "add a certificate extension");
}

void AddExtensions(X509& certificate, X509* issuer, const std::string& alternativeNames)
{
    const bool isAuthority = alternativeNames.empty();
    AddExtension(certificate, issuer, NID_basic_constraints,
                 isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    AddExtension(certificate, issuer, NID_key_usage,
                 isAuthority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
    AddExtension(certificate, issuer, NID_subject_key_identifier, "hash");
    AddExtension(certificate, issuer, NID_authority_key_identifier, "keyid:always");
    if (isAuthority)
        return;
    AddExtension(certificate, issuer, NID_ext_key_usage, "serverAuth");
    AddExtension(certificate, issuer, NID_subject_alt_name, alternativeNames);
}

std::string TakeText(BIO& bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(&bio, &data);
    return {data, static_cast<std::size_t>(size)};
}

} // namespace

Identity MakeIdentity(const CertificateRequest& request, const Identity* authority)
{
    Identity made{CKeyPtr(EVP_EC_gen("P-256")), CCertificatePtr(X509_new())};
    Check(static_cast<bool>(made), "make a key");
    X509& certificate = *made.certificate;
    Check(X509_set_version(&certificate, X509_VERSION_3) == 1 &&
              X509_set_pubkey(&certificate, made.key.get()) == 1,
          "fill a certificate");
    SetSerialNumber(certificate);
    // Begins an hour ago: the clock of the machine may be set back a little afterwards.
    Check(X509_gmtime_adj(X509_getm_notBefore(&certificate), -3600) != nullptr &&
              X509_gmtime_adj(X509_getm_notAfter(&certificate),
                              request.validDays * secondsPerDay) != nullptr,
          "date a certificate");
    SetNames(certificate, request.commonName, authority);
    AddExtensions(certificate, authority ? authority->certificate.get() : &certificate,
                  request.alternativeNames);
    Check(X509_sign(&certificate, authority ? authority->key.get() : made.key.get(), EVP_sha256()) >
              0,
          "sign a certificate");
    return made;
}

bool IsUsable(const Identity& identity, const Identity* authority)
{
    if (!identity || X509_check_private_key(identity.certificate.get(), identity.key.get()) != 1)
        return false;
    EVP_PKEY* signer = authority ? authority->key.get() : identity.key.get();
    time_t tomorrow = ::time(nullptr) + secondsPerDay;
    const bool usable =
        X509_verify(identity.certificate.get(), signer) == 1 &&
        X509_cmp_time(X509_get0_notBefore(identity.certificate.get()), nullptr) < 0 &&
        X509_cmp_time(X509_get0_notAfter(identity.certificate.get()), &tomorrow) > 0;
    ERR_clear_error();
    return usable;
}

std::string WritePem(const Identity& identity)
{
    const CBioPtr bio(BIO_new(BIO_s_mem()));
    Check(bio &&
              PEM_write_bio_PrivateKey(bio.get(), identity.key.get(), nullptr, nullptr, 0, nullptr,
                                       nullptr) == 1 &&
              PEM_write_bio_X509(bio.get(), identity.certificate.get()) == 1,
          "write a certificate");
    return TakeText(*bio);
}

Identity ReadPem(const std::string& text)
{
    // An empty password stops OpenSSL from asking for one at the terminal.
    char noPassword[] = "";
    const CBioPtr bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    Identity read;
    if (bio)
    {
        read.key.reset(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, noPassword));
        read.certificate.reset(PEM_read_bio_X509(bio.get(), nullptr, nullptr, noPassword));
    }
    ERR_clear_error();
    return read;
}

std::string WriteCertificatePem(const X509& certificate)
{
    const CBioPtr bio(BIO_new(BIO_s_mem()));
    Check(bio && PEM_write_bio_X509(bio.get(), &certificate) == 1, "write a certificate");
    return TakeText(*bio);
}

std::string WriteCertificateDer(const X509& certificate)
{
    const CBioPtr bio(BIO_new(BIO_s_mem()));
    Check(bio && i2d_X509_bio(bio.get(), &certificate) == 1, "write a certificate");
    return TakeText(*bio);
}

} // namespace collector
