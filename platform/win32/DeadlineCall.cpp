#include "platform/win32/DeadlineCall.h"

#include "platform/ModuleState.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <memory>

extern "C" IMAGE_DOS_HEADER __ImageBase; // the linker's name for the start of this module

namespace platform {

namespace {

struct Call
{
    std::function<void()> work;
    CKernelHandle ended;
};

// The callback's own share of the call, handed through the pool.
using Share = std::shared_ptr<Call>;

void CALLBACK RunCall(PTP_CALLBACK_INSTANCE, void* share)
{
    const std::unique_ptr<Share> own(static_cast<Share*>(share));
    Call& call = **own;
    call.work();
    call.work = nullptr;
    ::SetEvent(call.ended.Get());
}

bool Submit(const Share& call)
{
    TP_CALLBACK_ENVIRON environment;
    ::InitializeThreadpoolEnvironment(&environment);
    ::SetThreadpoolCallbackLibrary(&environment, &__ImageBase);
    ::SetThreadpoolCallbackRunsLong(&environment);
    auto share = std::make_unique<Share>(call);
    if (!::TrySubmitThreadpoolCallback(&RunCall, share.get(), &environment))
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
    if (GetModuleState() != EModuleState::Running)
        return false;
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    call->ended = CKernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    return call->ended && Submit(call) && WaitForEnd(call->ended.Get(), limit, stop);
}

} // namespace platform
