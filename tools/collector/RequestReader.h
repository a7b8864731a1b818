#pragma once

#include "tools/collector/Hit.h"

#include <cstddef>
#include <functional>

namespace collector {

// What a client may make the collector hold for one request.
struct RequestLimits
{
    std::size_t head = 64 * 1024;        // bytes of request line and headers together
    std::size_t body = 64 * 1024 * 1024; // bytes
};

enum class ERead
{
    Request,
    End, // the client closed the connection, went silent or broke off
    Malformed,
    HeadTooLarge,
    BodyTooLarge
};

// Reads HTTP/1.x requests (RFC 9112) one after the other from a stream of bytes. Takes any method
// and any target, blanks inside the target included, because some clients send them unescaped.
// Memory grows with what arrived, never with what a length promises.
class CRequestReader
{
public:
    // Puts up to `size` bytes at `data` and returns their number; 0 at the end of the stream.
    using Source = std::function<std::size_t(char* data, std::size_t size)>;

    // `beforeBody` is called when the client waits for leave to send its body (RFC 9110, 10.1.1).
    CRequestReader(Source from, RequestLimits bounds, std::function<void()> beforeBody);

    // Fills method, target, version, headers and body. `hit` is complete only on ERead::Request.
    ERead Read(Hit& hit);

private:
    ERead ReadHead(Hit& hit);
    ERead ReadBody(Hit& hit);
    ERead ReadCounted(std::string& body, std::size_t count);
    ERead ReadChunks(std::string& body);
    ERead ReadLine(std::string& line, std::size_t& budget);
    bool Fill();

    Source source;
    RequestLimits limits;
    std::function<void()> onContinue;
    std::string buffer; // received and not yet taken: from `taken` on
    std::size_t taken = 0;
};

} // namespace collector
