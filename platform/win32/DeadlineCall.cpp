#include "platform/win32/DeadlineCall.h"

#include "platform/ModuleState.h"
#include "platform/win32/LoaderLock.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <memory>

namespace platform {

namespace {

struct Call
{
    std::function<void()> work;
    CKernelHandle ended;
};

constexpr DWORD loaderPause = 2; // milliseconds

// The callback's own share of the call, handed through the pool.
using Share = std::shared_ptr<Call>;

void RunCall(void* share)
{
    const std::unique_ptr<Share> own(static_cast<Share*>(share));
    Call& call = **own;
    call.work();
    call.work = nullptr;
    ::SetEvent(call.ended.Get());
}

// Whoever holds the loader's lock may be unloading this module and waiting for this very thread, so
// it is tried, never waited for. Null when the module is being unloaded or the time is over.
void* PinPatiently(std::chrono::milliseconds limit, const CStopSignal& stop)
{
    const ULONGLONG start = ::GetTickCount64();
    for (;;)
    {
        {
            const CLoaderTryLock lock;
            if (lock && GetModuleState() == EModuleState::Running)
                return PinModule();
        }
        const auto longest = stop.IsRequested() ? std::min(limit, limitAfterStop) : limit;
        if (GetModuleState() != EModuleState::Running ||
            ::GetTickCount64() - start >= static_cast<ULONGLONG>(longest.count()))
            return nullptr;
        ::Sleep(loaderPause);
    }
}

bool Submit(const Share& call, std::chrono::milliseconds limit, const CStopSignal& stop)
{
    auto share = std::make_unique<Share>(call);
    void* const pinned = PinPatiently(limit, stop);
    if (pinned == nullptr || !RunPinned(pinned, &RunCall, share.get()))
        return false;
    share.release();
    return true;
}

bool WaitForEnd(HANDLE ended, std::chrono::milliseconds limit, const CStopSignal& stop)
{
    const auto start = ::GetTickCount64();
    const auto whole = static_cast<DWORD>(std::clamp<std::int64_t>(limit.count(), 0, INFINITE - 1));
    const HANDLE handles[] = {ended, stop.GetNativeHandle()};
    const DWORD woken = ::WaitForMultipleObjects(2, handles, FALSE, whole);
    if (woken != WAIT_OBJECT_0 + 1)
        return woken == WAIT_OBJECT_0;
    const auto passed = std::min<ULONGLONG>(::GetTickCount64() - start, whole);
    const auto rest = static_cast<DWORD>(whole - passed);
    return ::WaitForSingleObject(
               ended, std::min(rest, static_cast<DWORD>(limitAfterStop.count()))) == WAIT_OBJECT_0;
}

} // namespace

bool RunWithinDeadline(std::function<void()> work, std::chrono::milliseconds limit,
                       const CStopSignal& stop)
{
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    call->ended = CKernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    return call->ended && Submit(call, limit, stop) && WaitForEnd(call->ended.Get(), limit, stop);
}

} // namespace platform
