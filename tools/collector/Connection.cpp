#include "tools/collector/Connection.h"

#include <algorithm>
#include <limits>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>

namespace collector {

CConnection::CConnection(CSocket accepted) : socket(std::move(accepted))
{
    const timeval silence{.tv_sec = 60, .tv_usec = 0};
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &silence, sizeof silence);
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &silence, sizeof silence);
    // Dripped bytes leave one by one, and answers do not wait for the client's acknowledgements.
    const int immediately = 1;
    ::setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
}

void CConnection::DiscardGreeting()
{
    char greeting[4096];
    [[maybe_unused]] const ssize_t taken = ::recv(socket.Get(), greeting, sizeof greeting, 0);
}

bool CConnection::Handshake(SSL_CTX& context)
{
    ERR_clear_error();
    ssl.reset(SSL_new(&context));
    return ssl && SSL_set_fd(ssl.get(), socket.Get()) == 1 && SSL_accept(ssl.get()) == 1;
}

std::size_t CConnection::Read(char* data, std::size_t size)
{
    std::size_t count = 0;
    ERR_clear_error();
    return SSL_read_ex(ssl.get(), data, size, &count) == 1 ? count : 0;
}

bool CConnection::Write(std::string_view bytes)
{
    std::size_t count = 0;
    ERR_clear_error();
    return bytes.empty() || SSL_write_ex(ssl.get(), bytes.data(), bytes.size(), &count) == 1;
}

bool CConnection::Wait(std::chrono::milliseconds time)
{
    pollfd watched{.fd = socket.Get(), .events = POLLRDHUP, .revents = 0};
    const auto longest = std::chrono::milliseconds(std::numeric_limits<int>::max());
    return ::poll(&watched, 1, static_cast<int>(std::min(time, longest).count())) == 0;
}

void CConnection::WaitForEnd()
{
    while (Wait(std::chrono::hours(1)))
        ;
}

bool CConnection::Send(const Answer& answer)
{
    if (answer.delay.count() > 0 && !Wait(answer.delay))
        return false;
    return SendBytes(answer) && Finish(answer.after);
}

bool CConnection::SendBytes(const Answer& answer)
{
    if (answer.bytePause.count() <= 0)
        return Write(answer.bytes);
    for (const char& byte : answer.bytes)
        if (!Write({&byte, 1}) || !Wait(answer.bytePause))
            return false;
    return true;
}

bool CConnection::Finish(EAfterAnswer after)
{
    switch (after)
    {
    case EAfterAnswer::KeepOpen:
        return true;
    case EAfterAnswer::Close:
        SSL_shutdown(ssl.get());
        break;
    case EAfterAnswer::Cut:
        break;
    case EAfterAnswer::Reset: {
        const linger now{.l_onoff = 1, .l_linger = 0};
        ::setsockopt(socket.Get(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        break;
    }
    case EAfterAnswer::Stall:
        WaitForEnd();
        break;
    }
    return false;
}

} // namespace collector
