#pragma once

#include "tools/collector/Endpoint.h"
#include "tools/collector/HitReport.h"
#include "tools/collector/QueryText.h"

#include <string>
#include <string_view>
#include <vector>

namespace collector {

// A request taken apart. Parameters that cannot be understood keep their own name as meaning.
struct DecodedHit
{
    EEndpoint endpoint = EEndpoint::Other;
    std::string kind; // "pageview", "event", "transaction", "item", "custom variable", "visit", ...
    std::vector<Parameter> parameters; // in the order of the wire, those of a body first
};

// Never fails: whatever is malformed stays as it came.
DecodedHit DecodeHit(const Hit& hit);

// The decoded value of the first parameter of that meaning; empty when there is none.
std::string_view GetValue(const std::vector<Parameter>& parameters, std::string_view meaning);

// What the hit says, in a sentence for a person: "event Scan / Start, value 3", "item P1 Pack,
// 3 at 10.00", "visit of Disk Tool".
std::string DescribeHit(const Hit& hit, const DecodedHit& decoded);

// The parameter as it stands, its value decoded; its meaning out of the endpoint's table.
Parameter MakeParameter(EEndpoint endpoint, const Piece& piece);

} // namespace collector
