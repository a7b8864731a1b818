#include "tests/simulated/DebugOutput.h"

#include "platform/DebugOutput.h"

#include <mutex>
#include <utility>

namespace simulated {

namespace {

std::mutex mutex;
std::vector<std::wstring> lines; // guarded by `mutex`

} // namespace

std::vector<std::wstring> TakeDebugOutput()
{
    const std::scoped_lock lock(mutex);
    return std::exchange(lines, {});
}

void ResetDebugOutput() { TakeDebugOutput(); }

} // namespace simulated

void platform::WriteDebugOutput(const std::wstring& line) noexcept
{
    const std::scoped_lock lock(simulated::mutex);
    simulated::lines.push_back(line);
}
