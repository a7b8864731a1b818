#include "tests/simulated/NotificationIcon.h"

#include "tests/simulated/State.h"

#include <map>

namespace simulated {

namespace {

struct NotificationArea
{
    std::map<std::uint32_t, platform::NotificationIconOptions> icons;
    std::vector<std::pair<std::wstring, std::wstring>> balloons;
};

CState<NotificationArea> area;

} // namespace

std::vector<platform::NotificationIconOptions> GetNotificationIcons()
{
    const auto held = area.Hold();
    std::vector<platform::NotificationIconOptions> shown;
    for (const auto& [id, options] : held->icons)
        shown.push_back(options);
    return shown;
}

std::vector<std::pair<std::wstring, std::wstring>> TakeBalloons()
{
    return std::exchange(area->balloons, {});
}

} // namespace simulated

namespace platform {

using simulated::area;

struct CNotificationIcon::Native
{
    std::uint32_t id;
};

CNotificationIcon::CNotificationIcon(const NotificationIconOptions& options, const CStopSignal&)
    : native(new Native{options.id})
{
    area->icons.emplace(options.id, options);
}

CNotificationIcon::~CNotificationIcon() { area->icons.erase(native->id); }

void CNotificationIcon::ShowBalloon(const std::wstring& title, const std::wstring& text)
{
    area->balloons.emplace_back(title, text);
}

} // namespace platform
