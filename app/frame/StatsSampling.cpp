#include "app/frame/StatsSampling.h"

#include "platform/Clock.h"
#include "platform/CodePage.h"
#include "platform/SystemFacts.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace app {

bool DrawDropsStatsEvents()
{
    platform::SeedRandom(static_cast<std::uint32_t>(platform::GetUnixTime()));
    return IsDroppingDraw(platform::DrawRandom());
}

bool IsDroppingDraw(int draw) noexcept { return std::floor(draw / 32767.0 * 10.0) != 7.0; }

bool IsStatsEvent(const TrackingHit& hit)
{
    constexpr std::wstring_view stats = L"STATS";
    return hit.type == EHitType::Event &&
           std::equal(hit.field2.begin(), hit.field2.end(), stats.begin(), stats.end(),
                      [](wchar_t unit, wchar_t upper) { return platform::ToUpper(unit) == upper; });
}

} // namespace app
