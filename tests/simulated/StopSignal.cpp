#include "platform/StopSignal.h"
#include "tests/simulated/VirtualTime.h"

#include <atomic>

namespace platform {

namespace {

std::atomic<bool>& GetFlag(void* event) noexcept { return *static_cast<std::atomic<bool>*>(event); }

} // namespace

CStopSignal::CStopSignal() : event(new std::atomic<bool>(false)) {}

CStopSignal::~CStopSignal() { delete &GetFlag(event); }

void CStopSignal::Request() noexcept
{
    simulated::ChangeAndWake([this] { GetFlag(event) = true; });
}

void CStopSignal::Clear() noexcept { GetFlag(event) = false; }

bool CStopSignal::IsRequested() const noexcept { return GetFlag(event); }

bool CStopSignal::Wait(std::chrono::milliseconds duration) const noexcept
{
    return simulated::WaitInVirtualTime([this] { return IsRequested(); }, duration);
}

} // namespace platform
