#include "frame/StatsSampling.h"

#include "platform/Clock.h"
#include "platform/SystemFacts.h"
#include "text/Case.h"

#include <cmath>

namespace frame {

bool DrawDropsStatsEvents()
{
    platform::SeedRandom(static_cast<std::uint32_t>(platform::GetUnixTime()));
    return IsDroppingDraw(platform::DrawRandom());
}

bool IsDroppingDraw(int draw) noexcept { return std::floor(draw / 32767.0 * 10.0) != 7.0; }

bool IsStatsEvent(const TrackingHit& hit)
{
    return hit.type == EHitType::Event && text::EqualIgnoringCase(hit.field2, L"STATS");
}

} // namespace frame
