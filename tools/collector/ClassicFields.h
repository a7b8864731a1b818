#pragma once

#include "tools/collector/Decode.h"

namespace collector {

// The fields of a classic hit from the pieces of its query.
DecodedHit DecodeClassic(const std::vector<Field>& query);

} // namespace collector
