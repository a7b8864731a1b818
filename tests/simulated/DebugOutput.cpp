#include "tests/simulated/DebugOutput.h"

#include "platform/DebugOutput.h"

simulated::CState<std::vector<std::wstring>> simulated::debugOutput;

void platform::WriteDebugOutput(const std::wstring& line) noexcept
{
    simulated::debugOutput->push_back(line);
}
