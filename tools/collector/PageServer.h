#pragma once

#include "tools/collector/HitStore.h"

#include <functional>
#include <memory>
#include <string>

namespace collector {

// The HTTP interface of docs/collector-api.md and the page, over plain HTTP on 127.0.0.1.
class CPageServer
{
public:
    // Listens when it returns; port 0 takes any free one. `reset` forgets all hits and returns
    // their number. Throws std::runtime_error when the port cannot be had.
    CPageServer(CHitStore& from, std::function<std::size_t()> reset, int port);
    CPageServer(const CPageServer&) = delete;
    CPageServer& operator=(const CPageServer&) = delete;

    // Ends all requests, those that wait included; the store waits for nothing any more.
    ~CPageServer();

    int GetPort() const;

private:
    class CImplementation; // keeps the large HTTP header out of this one
    std::unique_ptr<CImplementation> implementation;
};

} // namespace collector
