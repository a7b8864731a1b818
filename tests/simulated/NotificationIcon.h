#pragma once

#include "platform/NotificationIcon.h"
#include "tests/simulated/State.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace simulated {

struct NotificationArea
{
    std::map<std::uint32_t, platform::NotificationIconOptions> icons; // by their number
    std::vector<std::pair<std::wstring, std::wstring>> balloons;      // title and text, all shown
};
extern CState<NotificationArea> area;

} // namespace simulated
