#pragma once

#include "platform/NotificationIcon.h"
#include "tests/simulated/Simulated.h"

#include <map>
#include <utility>

// What a tester sees.
namespace simulated {

extern CState<std::vector<std::wstring>> debugOutput;

// The lines of debugger output since the last take, in order.
inline std::vector<std::wstring> TakeDebugOutput()
{
    return std::exchange(*debugOutput.Hold(), {});
}

struct NotificationArea
{
    std::map<std::uint32_t, platform::NotificationIconOptions> icons; // by their number
    std::vector<std::pair<std::wstring, std::wstring>> balloons;      // title and text, all shown
};
extern CState<NotificationArea> area;

} // namespace simulated
