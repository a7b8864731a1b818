#pragma once

#include "tools/collector/HitReport.h"
#include "tools/collector/HitStore.h"

#include <string>

namespace collector {

// One hit for a person to read: a header line with number, local time, tracker and sentence, then a
// line per parameter and per verdict. Control characters are shown as "?", so that a request cannot
// steer the terminal. `colour` adds terminal colours.
std::string WriteReadable(const HitReport& report, bool colour);

// Lines for a person: hits by tracker, and what was found.
std::string WriteCounts(const HitCounts& counts);

// "2023-11-14T22:13:20.007Z" of milliseconds since 1970.
std::string FormatUtc(std::int64_t time);

} // namespace collector
