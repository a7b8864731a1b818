#pragma once

#include <csignal>
#include <memory>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <string>

// A client that sends exactly the given bytes and returns exactly what comes back.
class CTlsClient
{
public:
    // Connects to 127.0.0.1; check IsConnected().
    explicit CTlsClient(int port)
        : connection(BIO_new_connect(("127.0.0.1:" + std::to_string(port)).c_str()), &BIO_free),
          connected(BIO_do_connect(connection.get()) == 1)
    {
        std::signal(SIGPIPE, SIG_IGN);
    }

    bool IsConnected() const { return connected; }

    // Handshake that trusts the authority in that file and expects a certificate for 127.0.0.1.
    bool Handshake(const std::string& authorityPem)
    {
        SSL_CTX* context = SSL_CTX_new(TLS_client_method());
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
        SSL_CTX_load_verify_locations(context, authorityPem.c_str(), nullptr);
        ssl.reset(SSL_new(context));
        SSL_CTX_free(context); // shared with `ssl`
        X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl.get()), "127.0.0.1");
        SSL_set_fd(ssl.get(), static_cast<int>(BIO_get_fd(connection.get(), nullptr)));
        return SSL_connect(ssl.get()) == 1;
    }

    // Why the certificate was refused (X509_V_ERR_...); X509_V_OK when none was.
    long GetVerifyResult() const { return SSL_get_verify_result(ssl.get()); }

    void Send(const std::string& bytes)
    {
        SSL_write(ssl.get(), bytes.data(), static_cast<int>(bytes.size()));
    }

    // What comes until the connection ends.
    std::string Read()
    {
        std::string read;
        char part[16 * 1024];
        for (std::size_t size = 0; SSL_read_ex(ssl.get(), part, sizeof part, &size) == 1;)
            read.append(part, size);
        return read;
    }

    // True when Read() came to an end that the server announced within TLS.
    bool WasClosedProperly() const
    {
        return (SSL_get_shutdown(ssl.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
    }

private:
    std::unique_ptr<BIO, decltype(&BIO_free)> connection;
    bool connected;
    std::unique_ptr<SSL, decltype(&SSL_free)> ssl{nullptr, &SSL_free};
};
