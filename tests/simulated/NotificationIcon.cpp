#include "tests/simulated/NotificationIcon.h"

#include <map>
#include <mutex>

namespace simulated {

namespace {

std::mutex mutex; // guards what follows
std::map<std::uint32_t, platform::NotificationIconOptions> icons;
std::vector<std::pair<std::wstring, std::wstring>> balloons;

} // namespace

std::vector<platform::NotificationIconOptions> GetNotificationIcons()
{
    const std::scoped_lock lock(mutex);
    std::vector<platform::NotificationIconOptions> shown;
    for (const auto& [id, options] : icons)
        shown.push_back(options);
    return shown;
}

std::vector<std::pair<std::wstring, std::wstring>> TakeBalloons()
{
    const std::scoped_lock lock(mutex);
    return std::exchange(balloons, {});
}

void ResetNotificationIcons()
{
    const std::scoped_lock lock(mutex);
    icons.clear();
    balloons.clear();
}

} // namespace simulated

namespace platform {

struct CNotificationIcon::Native
{
    std::uint32_t id;
};

CNotificationIcon::CNotificationIcon(const NotificationIconOptions& options, const CStopSignal&)
    : native(new Native{options.id})
{
    const std::scoped_lock lock(simulated::mutex);
    simulated::icons.emplace(options.id, options);
}

CNotificationIcon::~CNotificationIcon()
{
    const std::scoped_lock lock(simulated::mutex);
    simulated::icons.erase(native->id);
}

void CNotificationIcon::ShowBalloon(const std::wstring& title, const std::wstring& text)
{
    const std::scoped_lock lock(simulated::mutex);
    simulated::balloons.emplace_back(title, text);
}

} // namespace platform
