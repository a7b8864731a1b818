#pragma once

#include "platform/NotificationIcon.h"

#include <string>
#include <utility>
#include <vector>

namespace simulated {

// The icons in the notification area.
std::vector<platform::NotificationIconOptions> GetNotificationIcons();

// Title and text of the balloons shown since the last take, in order.
std::vector<std::pair<std::wstring, std::wstring>> TakeBalloons();

} // namespace simulated
