#pragma once

#include "tools/collector/Endpoint.h"
#include "tools/collector/Hit.h"
#include "tools/collector/QueryText.h"

#include <string>
#include <string_view>
#include <vector>

namespace collector {

// A request taken apart. Known parameters carry readable names ("event category"), unknown ones and
// those that cannot be understood their own; all in the order of the wire. Values are UTF-8,
// decoded by DecodeText().
struct DecodedHit
{
    EEndpoint endpoint = EEndpoint::Other;
    std::string kind; // "pageview", "event", "transaction", "item", "custom variable", "visit", ...
    std::vector<Field> fields;
};

// Never fails: whatever is malformed stays as it came.
DecodedHit DecodeHit(const Hit& hit);

// The value of the first field of that name; empty when there is none.
std::string GetField(const DecodedHit& hit, std::string_view name);

// What the hit says, in a few words: "Scan / Start / unknown (1)", "Disk Tool", "A1 30.00".
std::string DescribeHit(const DecodedHit& hit);

} // namespace collector
