#include "frame/Hits.h"

#include "text/Decimal.h"

namespace frame {

namespace {

constexpr std::wstring_view OrUnknown(std::wstring_view text)
{
    return text.empty() ? L"unknown" : text;
}

bool IsEventValue(std::wstring_view value)
{
    return value.empty() || value == L"0" || text::ReadDecimal(value) != 0;
}

} // namespace

HitView MakePageviewHit() { return {.type = EHitType::Pageview}; }

HitView MakeMessageHit(std::wstring_view text)
{
    return {.type = EHitType::Message, .field5 = text};
}

HitView MakeEventHit(std::wstring_view category, std::wstring_view action, std::wstring_view label,
                     std::wstring_view value, std::wstring_view page)
{
    return {.type = EHitType::Event,
            .field1 = value.empty() ? L"0" : value,
            .field2 = OrUnknown(category),
            .field3 = OrUnknown(label),
            .field4 = OrUnknown(action),
            .field5 = page};
}

HitView MakeEventExHit(std::wstring_view category, std::wstring_view action,
                       std::wstring_view label, std::wstring_view value, std::wstring_view page,
                       bool onceOnly)
{
    return {.type = EHitType::Event,
            .field1 = IsEventValue(value) ? value : std::wstring_view(),
            .field2 = OrUnknown(category),
            .field3 = label,
            .field4 = OrUnknown(action),
            .field5 = page,
            .onceOnly = onceOnly};
}

} // namespace frame
