#pragma once

#include "tools/collector/HitReport.h"

#include <cstdint>
#include <optional>
#include <string>

namespace collector {

// The hit before another one.
struct PreviousHit
{
    std::uint64_t id = 0;
    std::int64_t time = 0; // milliseconds since 1970
};

// The forms of one hit that docs/collector-api.md describes, without a line end.
std::string WriteSummary(const HitReport& report);
std::string WriteWhole(const HitReport& report, const std::optional<PreviousHit>& previous);
std::string WriteLine(const HitReport& report);

// {"MEANING": "decoded value", ...}: of parameters with the same meaning the first, and none behind
// the two hundredth parameter.
std::string WriteFields(const HitReport& report);

// [["NAME", "VALUE"], ...].
std::string WriteHeaders(const HitReport& report);
std::vector<Header> ReadHeaders(std::string_view json); // empty when it is otherwise

// The request out of a line as WriteLine() writes it. Throws std::runtime_error.
Hit ReadLine(std::string_view line);

} // namespace collector
