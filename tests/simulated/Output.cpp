#include "tests/simulated/Output.h"

#include "platform/DebugOutput.h"

namespace simulated {

CState<std::vector<std::wstring>> debugOutput;
CState<NotificationArea> area;

} // namespace simulated

namespace platform {

using namespace simulated;

void WriteDebugOutput(const std::wstring& line) noexcept { debugOutput->push_back(line); }

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
