#include "tests/simulated/NotificationIcon.h"

namespace simulated {

CState<NotificationArea> area;

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
