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

HitView MakePageviewHit() { return {EHitType::Pageview, {}, {}, {}, {}, {}, false}; }

HitView MakeMessageHit(std::wstring_view text)
{
    return {EHitType::Message, {}, {}, {}, {}, text, false};
}

HitView MakeEventHit(std::wstring_view category, std::wstring_view action, std::wstring_view label,
                     std::wstring_view value, std::wstring_view page)
{
    HitView hit;
    hit.type = EHitType::Event;
    hit.field1 = value.empty() ? L"0" : value;
    hit.field2 = OrUnknown(category);
    hit.field3 = OrUnknown(label);
    hit.field4 = OrUnknown(action);
    hit.field5 = page;
    return hit;
}

HitView MakeEventExHit(std::wstring_view category, std::wstring_view action,
                       std::wstring_view label, std::wstring_view value, std::wstring_view page,
                       bool onceOnly)
{
    HitView hit;
    hit.type = EHitType::Event;
    if (IsEventValue(value))
        hit.field1 = value;
    hit.field2 = OrUnknown(category);
    hit.field3 = label;
    hit.field4 = OrUnknown(action);
    hit.field5 = page;
    hit.onceOnly = onceOnly;
    return hit;
}

} // namespace frame
