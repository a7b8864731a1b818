#pragma once

#include <utility>

namespace collector {

// Sole owner of a socket.
class CSocket
{
public:
    CSocket() noexcept = default;
    explicit CSocket(int taken) noexcept : handle(taken) {}
    CSocket(CSocket&& other) noexcept : handle(std::exchange(other.handle, -1)) {}
    CSocket& operator=(CSocket&& other) noexcept;
    ~CSocket() { Reset(); }

    explicit operator bool() const noexcept { return handle >= 0; }
    int Get() const noexcept { return handle; }
    void Reset() noexcept;

private:
    int handle = -1;
};

// A socket bound to 127.0.0.1 and that port (0: a free one), which does not listen yet: connecting
// to it is refused, and nobody else can take the port. Throws std::system_error.
CSocket BindLoopback(int port);

// The port that a socket is bound to.
int GetBoundPort(const CSocket& socket);

// A port of 127.0.0.1 on which connections are refused for as long as the object lives.
class CRefusingPort
{
public:
    CRefusingPort() : socket(BindLoopback(0)) {}
    int GetPort() const { return GetBoundPort(socket); }

private:
    CSocket socket;
};

} // namespace collector
