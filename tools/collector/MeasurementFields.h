#pragma once

#include "tools/collector/Decode.h"

namespace collector {

// The fields of a measurement-protocol hit: the pieces of its payload, which is the body of a POST,
// and those of the query.
DecodedHit DecodeMeasurement(const std::vector<Field>& query, const std::vector<Field>& payload);

} // namespace collector
