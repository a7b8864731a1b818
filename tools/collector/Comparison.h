#pragma once

#include "tools/collector/Plan.h"

#include <string>
#include <vector>

namespace collector {

// What became of one line of the plan, or (with `line` null) of what no line asks for.
struct PlanResult
{
    const PlanLine* line = nullptr;
    std::vector<std::string> problems; // empty: as planned
};

// Compares the hits, in the order of arrival, with the plan. The hits of each tracker come in the
// order of the plan's lines for it, unless the plan says otherwise; lines for any tracker take what
// is left over. Throws std::runtime_error when both together are too large to compare.
std::vector<PlanResult> Compare(const Plan& plan, const std::vector<HitReport>& hits);

std::size_t CountProblems(const std::vector<PlanResult>& results);

// For a person, one difference after the other.
std::string WriteDifferences(const Plan& plan, const std::vector<PlanResult>& results,
                             std::size_t hits);

// For build servers: JUnit XML, one test case a line of the plan.
std::string WriteJunit(const Plan& plan, const std::vector<PlanResult>& results);

} // namespace collector
