#pragma once

#include "tools/collector/Answer.h"
#include "tools/collector/Socket.h"

#include <cstddef>
#include <memory>
#include <openssl/ssl.h>
#include <string_view>

namespace collector {

struct SslDeleter
{
    void operator()(SSL* ssl) const noexcept { SSL_free(ssl); }
};

// One accepted connection and, after Handshake(), its TLS. Used by one thread. Shutting the socket
// down from another thread ends whatever the connection is waiting for.
class CConnection
{
public:
    explicit CConnection(CSocket accepted);

    // Waits for the client's first bytes and takes them, so that a close that follows is not
    // mistaken for a refused connection.
    void DiscardGreeting();

    // Server side of the TLS handshake; false when it failed.
    bool Handshake(SSL_CTX& context);

    // Bytes read, 0 at the end of the stream, on failure and after a minute of silence.
    std::size_t Read(char* data, std::size_t size);

    // False when the client takes no more.
    bool Write(std::string_view bytes);

    // Waits that long; false as soon as the connection ends before.
    bool Wait(std::chrono::milliseconds time);
    void WaitForEnd();

    // False when the connection is over afterwards.
    bool Send(const Answer& answer);

private:
    bool SendBytes(const Answer& answer);
    bool Finish(EAfterAnswer after);

    CSocket socket;
    std::unique_ptr<SSL, SslDeleter> ssl;
};

} // namespace collector
