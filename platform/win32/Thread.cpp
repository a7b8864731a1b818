#include "platform/Thread.h"

#include "platform/ModuleState.h"
#include "platform/win32/LoaderLock.h"
#include "platform/win32/ThreadValues.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <atomic>
#include <new>

namespace platform {

namespace {

// How long a thread may take to reach its routine before it counts as held back by somebody's
// loader lock.
constexpr DWORD entryLimit = 1000;

// How long a routine may take to return once its owner waits. No worker of this module needs as
// much; the limit keeps a fault of ours from hanging the host.
constexpr DWORD returnLimit = 20'000;

// The same while the loader's lock is held and nothing that the routine may wait for can happen.
constexpr DWORD returnLimitUnloading = 1500;

constexpr DWORD endLimit = 1000;

using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);

// Null where the system has no such service. Found while the module is being loaded: a worker that
// looked for it would wait for the loader's lock.
constinit SetThreadDescription setDescription = nullptr;

void FindSystemFunctions() noexcept
{
    PrepareLoaderLock();
    setDescription = reinterpret_cast<SetThreadDescription>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
}

CKernelHandle CreateManualEvent() noexcept
{
    return CKernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

} // namespace

struct CThread::State
{
    Routine routine;
    void* parameter;
    CKernelHandle entered = CreateManualEvent();
    CKernelHandle finished = CreateManualEvent();
    CKernelHandle never = CreateManualEvent();
    CKernelHandle thread{};
    std::atomic<std::uint32_t> result{0};

    // Keeps the module in the process until the thread has begun. A thread that has not begun waits
    // for the loader's lock, where whoever unloads the module can neither wait for it nor safely
    // end it.
    void* pinned = nullptr;

    static DWORD WINAPI Run(void* own) noexcept;
    bool WaitFor(const CKernelHandle& event, DWORD limit) const noexcept;
    bool WaitForReturn() const noexcept;
};

// A thread that returned from here would wait for the loader's lock, and whoever unloads the module
// would wait for the thread. So it stays, with nothing of ours in use, until Join ends it.
DWORD WINAPI CThread::State::Run(void* own) noexcept
{
    auto& state = *static_cast<State*>(own);
    ::SetEvent(state.entered.Get());
    if (state.pinned != nullptr)
        RunPinned(
            state.pinned, [](void*) {}, nullptr);
    state.result = state.routine(state.parameter);
    FreeThreadValues();
    ::SignalObjectAndWait(state.finished.Get(), state.never.Get(), INFINITE, FALSE);
    return state.result;
}

// True when the event came; false after the limit or when the thread is gone.
bool CThread::State::WaitFor(const CKernelHandle& event, DWORD limit) const noexcept
{
    const HANDLE handles[] = {event.Get(), thread.Get()};
    return ::WaitForMultipleObjects(2, handles, FALSE, limit) == WAIT_OBJECT_0;
}

bool CThread::State::WaitForReturn() const noexcept
{
    const bool unloading = GetModuleState() == EModuleState::Unloading;
    return WaitFor(entered, unloading ? 0 : entryLimit) &&
           WaitFor(finished, unloading ? returnLimitUnloading : returnLimit);
}

CThread::CThread() noexcept = default;

CThread::~CThread() { Close(); }

bool CThread::CreateSuspended(Routine routine, void* parameter) noexcept
{
    if (state)
        return false;
    std::unique_ptr<State> created(new (std::nothrow) State{routine, parameter});
    if (!created || !created->entered || !created->finished || !created->never)
        return false;
    created->thread = CKernelHandle(
        ::CreateThread(nullptr, 0, &State::Run, created.get(), CREATE_SUSPENDED, nullptr));
    if (!created->thread)
        return false;
    FindSystemFunctions();
    created->pinned = PinModule();
    state = std::move(created);
    return true;
}

void CThread::Resume() noexcept { ::ResumeThread(state->thread.Get()); }

bool CThread::IsHeld() const noexcept { return state != nullptr; }

bool CThread::IsActive() const noexcept
{
    return state && ::WaitForSingleObject(state->finished.Get(), 0) != WAIT_OBJECT_0 &&
           ::WaitForSingleObject(state->thread.Get(), 0) != WAIT_OBJECT_0;
}

bool CThread::Join() noexcept
{
    if (!state || GetModuleState() == EModuleState::ProcessEnding)
        return true;
    const bool returned = state->WaitForReturn();
    Terminate(returned ? state->result.load() : 1);
    return returned;
}

void CThread::Terminate(std::uint32_t exitCode) noexcept
{
    if (!state || GetModuleState() == EModuleState::ProcessEnding)
        return;
    ::TerminateThread(state->thread.Get(), exitCode);
    ::WaitForSingleObject(state->thread.Get(), endLimit);
}

void CThread::Close() noexcept
{
    if (state && ::WaitForSingleObject(state->thread.Get(), 0) != WAIT_OBJECT_0 &&
        GetModuleState() != EModuleState::ProcessEnding)
        state.release(); // still in use by the thread
    state.reset();
}

void NameCurrentThread(const wchar_t* name) noexcept
{
    if (setDescription != nullptr)
        setDescription(::GetCurrentThread(), name);
}

void YieldThread() noexcept { ::SwitchToThread(); }

} // namespace platform
