#pragma once

#include "tools/collector/Decode.h"

#include <cstddef>
#include <map>
#include <string>

namespace collector {

// Counts what arrived. Not thread-safe.
class CSummary
{
public:
    void Add(const DecodedHit& hit);

    // Hits at the three collection endpoints.
    std::size_t GetCollected() const;

    // Lines for a person: hits per endpoint and kind, and where each classic visitor stands.
    std::string Write() const;

private:
    struct Visitor
    {
        std::string sessionCount;
        std::string sessionHit;
    };
    std::map<EEndpoint, std::map<std::string, std::size_t>> counts; // by kind
    std::map<std::string, Visitor> visitors;                        // by visitor number
};

} // namespace collector
