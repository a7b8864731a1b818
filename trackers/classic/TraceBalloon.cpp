#include "trackers/classic/TraceBalloon.h"

#include "platform/TraceMessage.h"
#include "text/Format.h"

namespace trackers {

using frame::EHitType;

namespace {

constexpr std::uint32_t iconId = 2977;
constexpr std::uint32_t callbackMessage = 34721;
constexpr std::uint32_t balloonTimeout = 10'000; // milliseconds
constexpr int hitTraceLevel = 6;

} // namespace

HitDescription DescribeHit(const frame::TrackingHit& hit, const std::wstring& productName)
{
    switch (hit.type)
    {
    case EHitType::Pageview:
        return {L"GA: Pageview", productName};
    case EHitType::Event:
        return {L"GA: Event", text::FormatText(L"%s: %s - %s (%s)", hit.field2, hit.field4,
                                               hit.field3, hit.field1)};
    case EHitType::Message:
        return {L"GA: Message", hit.field5};
    case EHitType::Transaction:
        return {L"GA: Transaction", text::FormatText(L"%s - %s", productName, hit.field1)};
    case EHitType::Item:
        return {L"GA: Item", text::FormatText(L"%s - %s", productName, hit.field1)};
    case EHitType::None:
    case EHitType::CustomVariable:
        break;
    }
    return {};
}

CTraceBalloon::CTraceBalloon(const std::wstring& tip, const platform::CStopSignal& stop)
    : icon({iconId, callbackMessage, balloonTimeout, tip}, stop)
{}

void CTraceBalloon::Show(const HitDescription& hit)
{
    if (hit.title.empty())
        return;
    icon.ShowBalloon(hit.title, hit.text);
    platform::TraceMessage(hitTraceLevel, L"%s: %s", hit.title, hit.text);
}

} // namespace trackers
