#include "platform/win32/DeadlineCall.h"

#include "platform/win32/ModuleReference.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace platform {

namespace {

// How long the thread of a call that has returned may take to be gone. Nothing depends on it but
// that a module whose trackers are released leaves the process as soon as it is unloaded.
constexpr DWORD leaveLimit = 200;

struct Call
{
    std::function<void()> work;
    CKernelHandle ended;
    HMODULE reference = nullptr; // the thread's, which it gives back when it leaves
};

// The thread's own share of the call.
using Share = std::shared_ptr<Call>;

void Run(Call& call) noexcept
{
    try
    {
        call.work();
    }
    catch (...)
    {}
    call.work = nullptr;
}

DWORD WINAPI RunThread(void* handed) noexcept
{
    std::unique_ptr<Share> share(static_cast<Share*>(handed));
    const HMODULE reference = (*share)->reference;
    Run(**share);
    ::SetEvent((*share)->ended.Get());
    share.reset();
    ::FreeLibraryAndExitThread(reference, 0);
    return 0;
}

CKernelHandle Start(const Share& call, std::chrono::milliseconds limit, const CStopSignal& stop)
{
    auto share = std::make_unique<Share>(call);
    call->reference = TryTakeModuleReference(limit, &stop);
    CKernelHandle thread;
    if (call->reference != nullptr)
        thread = CKernelHandle(::CreateThread(nullptr, 0, &RunThread, share.get(), 0, nullptr));
    if (thread)
        share.release();
    return thread;
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

ECallEnd RunWithinDeadline(std::function<void()> work, std::chrono::milliseconds limit,
                           const CStopSignal& stop)
{
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    call->ended = CKernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const CKernelHandle thread = call->ended ? Start(call, limit, stop) : CKernelHandle();
    if (!thread)
        return ECallEnd::NotStarted;
    if (!WaitForEnd(call->ended.Get(), limit, stop))
        return ECallEnd::Abandoned;
    ::WaitForSingleObject(thread.Get(), leaveLimit);
    return ECallEnd::Returned;
}

} // namespace platform
