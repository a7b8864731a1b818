#pragma once

#include "tests/simulated/State.h"

#include <string>
#include <utility>
#include <vector>

namespace simulated {

extern CState<std::vector<std::wstring>> debugOutput;

// The lines written since the last take, in order.
inline std::vector<std::wstring> TakeDebugOutput()
{
    return std::exchange(*debugOutput.Hold(), {});
}

} // namespace simulated
