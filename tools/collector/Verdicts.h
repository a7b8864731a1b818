#pragma once

#include "tools/collector/Decode.h"
#include "tools/collector/HitReport.h"

#include <vector>

namespace collector {

// What the table of its request has against the hit: missing, unknown, repeated, misplaced,
// malformed, out-of-range, inconsistent, kind, method, address.
void CheckTable(const Hit& hit, const DecodedHit& decoded, std::vector<Verdict>& verdicts);

// What real servers make of the hit (docs/servers.md): robot, product-lost, product-altered,
// no-product, blank-category, label-too-long, no-number, site-without-scheme, language-country.
void CheckServers(const DecodedHit& decoded, std::vector<Verdict>& verdicts);

} // namespace collector
