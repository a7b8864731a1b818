#include "tools/collector/Socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace collector {

CSocket& CSocket::operator=(CSocket&& other) noexcept
{
    const int next = std::exchange(other.handle, -1);
    Reset();
    handle = next;
    return *this;
}

void CSocket::Reset() noexcept
{
    if (handle >= 0)
        ::close(std::exchange(handle, -1));
}

CSocket BindLoopback(int port)
{
    CSocket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // A port may be used again while connections of its last user are still fading away.
    const int reuse = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!socket ||
        ::setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) != 0 ||
        ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::system_error(errno, std::generic_category(), "bind");
    return socket;
}

int GetBoundPort(const CSocket& socket)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::system_error(errno, std::generic_category(), "getsockname");
    return ntohs(address.sin_port);
}

} // namespace collector
