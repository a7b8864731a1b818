#pragma once

#include "tools/collector/HitReport.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace collector {

// "NAME = PATTERN": what a hit has to say.
struct PlanCondition
{
    std::string name;    // a meaning, a parameter, or product, visitor, session, sentence, verdict,
                         // code
    std::string pattern; // "*" stands for any text
};

// One line of a plan: so many hits of that kind.
struct PlanLine
{
    static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

    int number = 0; // in its file, from 1
    std::string text;
    std::size_t least = 1;
    std::size_t most = 1;
    std::string tracker; // "*": any
    std::string kind;    // a pattern
    std::vector<PlanCondition> conditions;
};

// The hits that a run of a host should report; docs/expect.md describes the text.
struct Plan
{
    std::string title;
    bool inAnyOrder = false;
    bool othersAllowed = false;
    std::vector<PlanLine> lines;
};

// Throws std::invalid_argument that names the line.
Plan ParsePlan(std::string_view text);

bool Matches(const PlanLine& line, const HitReport& hit);

// What the hit says about the line's conditions that it does not fulfil: "event action is "STOP"".
std::vector<std::string> ListMismatches(const PlanLine& line, const HitReport& hit);

// True when the text is the pattern, in which "*" stands for any text.
bool MatchesPattern(std::string_view pattern, std::string_view text);

} // namespace collector
