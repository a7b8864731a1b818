#pragma once

#include "tools/collector/Decode.h"

namespace collector {

// The fields of a KPI hit from the pieces of its query.
DecodedHit DecodeKpi(const std::vector<Field>& query);

} // namespace collector
