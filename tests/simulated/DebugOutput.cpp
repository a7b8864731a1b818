#include "tests/simulated/DebugOutput.h"

#include "platform/DebugOutput.h"
#include "tests/simulated/State.h"

#include <utility>

namespace simulated {

static CState<std::vector<std::wstring>> lines;

std::vector<std::wstring> TakeDebugOutput() { return std::exchange(*lines.Hold(), {}); }

} // namespace simulated

void platform::WriteDebugOutput(const std::wstring& line) noexcept
{
    simulated::lines->push_back(line);
}
