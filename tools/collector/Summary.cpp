#include "tools/collector/Summary.h"

#include <cctype>

namespace collector {

namespace {

// Kinds and visitors come off the wire: their number and their text stay within bounds.
constexpr std::size_t mostEntries = 20;

std::string MakeName(const std::string& text)
{
    std::string name = text.substr(0, 40);
    for (char& byte : name)
        if (std::isprint(static_cast<unsigned char>(byte)) == 0)
            byte = '?';
    return name;
}

std::size_t Sum(const std::map<std::string, std::size_t>& kinds)
{
    std::size_t sum = 0;
    for (const auto& [kind, count] : kinds)
        sum += count;
    return sum;
}

} // namespace

void CSummary::Add(const DecodedHit& hit)
{
    std::map<std::string, std::size_t>& kinds = counts[hit.endpoint];
    const std::string kind = MakeName(hit.kind);
    ++kinds[kinds.size() < mostEntries || kinds.count(kind) > 0 ? kind : "more kinds"];
    const std::string visitor = MakeName(GetField(hit, "visitor number"));
    if (!visitor.empty() && (visitors.size() < mostEntries || visitors.count(visitor) > 0))
        visitors[visitor] = {MakeName(GetField(hit, "session count")),
                             MakeName(GetField(hit, "session hit"))};
}

std::size_t CSummary::GetCollected() const
{
    std::size_t collected = 0;
    for (const auto& [endpoint, kinds] : counts)
        if (endpoint != EEndpoint::Other)
            collected += Sum(kinds);
    return collected;
}

std::string CSummary::Write() const
{
    std::string text = "Hits collected: " + std::to_string(GetCollected()) + "\n";
    for (const auto& [endpoint, kinds] : counts)
    {
        text += "  " + std::string(GetName(endpoint)) + ": " + std::to_string(Sum(kinds));
        const char* separator = " (";
        for (const auto& [kind, count] : kinds)
        {
            text += separator + kind + ' ' + std::to_string(count);
            separator = ", ";
        }
        text += ")\n";
    }
    for (const auto& [number, visitor] : visitors)
        text += "  visitor " + number + ": session count " + visitor.sessionCount +
                ", page counter " + visitor.sessionHit + "\n";
    return text;
}

} // namespace collector
