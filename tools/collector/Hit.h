#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace collector {

struct Header
{
    std::string name;
    std::string value;
};

// One request as it came over the wire. Nothing is decoded or normalised: every text holds the
// bytes that the client sent, without line ends; header values without the blanks around them.
struct Hit
{
    std::uint64_t sequence = 0;   // 1 for the first request that a collector took
    std::uint64_t connection = 0; // 1 for the first connection; requests may share one
    std::chrono::system_clock::time_point time;
    std::string method;
    std::string target;  // between the first and the last blank of the request line
    std::string version; // "HTTP/1.1"
    std::vector<Header> headers;
    std::string body; // chunks are joined
};

// The value of the first header of that name, whatever its case; empty when there is none.
std::string FindHeader(const Hit& hit, std::string_view name);

bool EqualsIgnoringCase(std::string_view one, std::string_view other);

} // namespace collector
