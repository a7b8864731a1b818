#pragma once

#include "frame/TrackingHit.h"
#include "text/Decimal.h"

#include <string_view>

// How the host's arguments become hits, without a copy of a text. Pure; any thread. Inline, for the
// host waits for them.
namespace frame {

constexpr HitView MakePageviewHit() { return {.type = EHitType::Pageview}; }

constexpr HitView MakeMessageHit(std::wstring_view text)
{
    return {.type = EHitType::Message, .field5 = text};
}

// What stands in an event for an empty text that it must have.
constexpr std::wstring_view OrUnknown(std::wstring_view text)
{
    return text.empty() ? L"unknown" : text;
}

// Empty category, action or label become "unknown", an empty value "0". An empty page stays so.
constexpr HitView MakeEventHit(std::wstring_view category, std::wstring_view action,
                               std::wstring_view label, std::wstring_view value,
                               std::wstring_view page)
{
    return {.type = EHitType::Event,
            .field1 = value.empty() ? L"0" : value,
            .field2 = OrUnknown(category),
            .field3 = OrUnknown(label),
            .field4 = OrUnknown(action),
            .field5 = page};
}

// Empty category or action become "unknown", the label stays as it is, and so does a value that is
// empty, "0" or begins with a number other than 0; every other value is dropped.
inline HitView MakeEventExHit(std::wstring_view category, std::wstring_view action,
                              std::wstring_view label, std::wstring_view value,
                              std::wstring_view page, bool onceOnly)
{
    const bool isKept = value.empty() || value == L"0" || text::ReadDecimal(value) != 0;
    return {.type = EHitType::Event,
            .field1 = isKept ? value : std::wstring_view(),
            .field2 = OrUnknown(category),
            .field3 = label,
            .field4 = OrUnknown(action),
            .field5 = page,
            .onceOnly = onceOnly};
}

} // namespace frame
