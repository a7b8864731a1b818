#pragma once

#include "tools/collector/Socket.h"

#include <string>
#include <sys/types.h>

namespace soak {

// An HTTP proxy on this machine: Debian's tinyproxy, on a free port. Throws std::runtime_error when
// it cannot be started.
class CProxy
{
public:
    explicit CProxy(bool asksForPassword);
    ~CProxy();
    CProxy(const CProxy&) = delete;
    CProxy& operator=(const CProxy&) = delete;

    std::string GetAddress() const;

private:
    int port;
    pid_t process = -1;
};

// Takes connections and never says anything.
class CSilentServer
{
public:
    CSilentServer();
    std::string GetAddress() const;

private:
    collector::CSocket listening;
};

} // namespace soak
