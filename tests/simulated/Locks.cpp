#include "platform/CriticalSection.h"
#include "platform/StopSignal.h"
#include "tests/simulated/VirtualTime.h"

#include <atomic>
#include <mutex>
#include <new>

namespace platform {

namespace {

std::recursive_mutex& GetMutex(std::byte* storage) noexcept
{
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(storage));
}

std::atomic<bool>& GetFlag(void* event) noexcept { return *static_cast<std::atomic<bool>*>(event); }

} // namespace

CCriticalSection::CCriticalSection()
{
    static_assert(sizeof(std::recursive_mutex) <= sizeof(storage));
    new (storage) std::recursive_mutex;
}

CCriticalSection::~CCriticalSection() { GetMutex(storage).~recursive_mutex(); }

void CCriticalSection::Enter() noexcept { GetMutex(storage).lock(); }

bool CCriticalSection::TryEnter() noexcept { return GetMutex(storage).try_lock(); }

void CCriticalSection::Leave() noexcept { GetMutex(storage).unlock(); }

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
