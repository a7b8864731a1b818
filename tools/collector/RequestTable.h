#pragma once

#include "tools/collector/Endpoint.h"

#include <span>
#include <string_view>

namespace collector {

// What a value has to look like.
struct Form
{
    std::string_view wants; // for a person: "a whole number"
    bool (*holds)(std::string_view decoded);
};

// One parameter of a request. Where it stands in its table is where it stands on the wire.
struct ParameterRule
{
    std::string_view name;
    std::string_view meaning;
    const Form* form;             // null: anything
    std::string_view kinds = "*"; // the kinds of hit that have it, between commas; "*": all
    bool optional = false;
};

// The table of a request; empty for EEndpoint::Other. docs/protocols.md describes the same.
std::span<const ParameterRule> GetTable(EEndpoint endpoint);

// The parts that each classic "utmcc" has.
std::span<const ParameterRule> GetVisitorParts();

// The parameter's rule; null when the table does not know it.
const ParameterRule* FindRule(EEndpoint endpoint, std::string_view parameter);

// True when a hit of that kind has the parameter.
bool BelongsTo(const ParameterRule& rule, std::string_view kind);

bool IsWholeNumber(std::string_view text);

} // namespace collector
