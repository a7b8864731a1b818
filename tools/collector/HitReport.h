#pragma once

#include "tools/collector/Hit.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace collector {

// How far a hit is from what its table says. In the order of weight.
enum class ESeverity
{
    Valid,   // nothing to say; no verdict has it
    Note,    // sent as described, but worth to know: a server may read it in another way
    Warning, // unusual: the hit counts, its meaning may suffer
    Error    // not what the table of its request says, or a server drops it
};

// "valid", "note", "warning", "error".
std::string_view GetName(ESeverity severity);

// One finding about one hit.
struct Verdict
{
    ESeverity severity = ESeverity::Note;
    std::string code;        // a fixed word for machines, such as "missing" or "session-backwards"
    std::string parameter;   // as on the wire; empty when the hit as a whole is meant
    std::string explanation; // one sentence for a person
};

// One parameter of the request, or one part of a parameter that is made of several: the parts of
// "utme" and "utmcc" follow each other under the same name.
struct Parameter
{
    std::string name;    // as on the wire: "utmhn"
    std::string raw;     // the bytes as sent
    std::string decoded; // UTF-8, by DecodeText()
    std::string meaning; // "event category"; equals `name` when the parameter is not known
};

// One recorded hit, decoded and checked. Texts are UTF-8, those of `request` the bytes as sent.
struct HitReport
{
    std::uint64_t id = 0;  // 1 for the first hit of a store
    std::int64_t time = 0; // milliseconds since 1970, UTC
    std::string tracker;   // "classic", "measurement", "KPI", "other"
    std::string endpoint;  // the path: "/__utm.gif"
    std::string kind;      // "pageview", "event", "custom variable", "transaction", "item", "visit"
    std::string product;
    std::string visitor;  // the visitor number, client id or user id
    std::string session;  // number of the visitor's session
    std::string sentence; // "event Scan / Start, value 3, third time"
    std::vector<Verdict> verdicts;
    std::vector<Parameter> parameters; // in the order of the wire
    Hit request;                       // line, headers, body, connection
};

// The codes of the verdicts, each once.
std::vector<std::string_view> ListCodes(const HitReport& report);

// The heaviest verdict; Valid when there is none.
ESeverity GetSeverity(const HitReport& report);

} // namespace collector
