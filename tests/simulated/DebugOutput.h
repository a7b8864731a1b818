#pragma once

#include <string>
#include <vector>

namespace simulated {

// The lines written since the last take, in order.
std::vector<std::wstring> TakeDebugOutput();

} // namespace simulated
