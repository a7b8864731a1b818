#pragma once

#include "tools/collector/Socket.h"

#include <memory>
#include <openssl/ssl.h>
#include <string>

// A client that sends exactly the given bytes and returns exactly what comes back. Its waits end
// after 10 seconds, so a server that does not answer fails a test instead of hanging it.
class CTlsClient
{
public:
    // Connects to 127.0.0.1; check IsConnected().
    explicit CTlsClient(int port);

    bool IsConnected() const { return connected; }

    // Handshake that trusts the authority in that file and expects a certificate for 127.0.0.1.
    bool Handshake(const std::string& authorityPem);

    // Why the certificate was refused (X509_V_ERR_...); X509_V_OK when none was.
    long GetVerifyResult() const { return SSL_get_verify_result(ssl.get()); }

    void Send(const std::string& bytes);

    // What comes until `count` bytes are there or the connection ends.
    std::string Read(std::size_t count = std::string::npos);

    // True when Read() came to an end that the server announced within TLS.
    bool WasClosedProperly() const;

private:
    collector::CSocket socket;
    bool connected = false;
    std::unique_ptr<SSL, decltype(&SSL_free)> ssl{nullptr, &SSL_free};
};
