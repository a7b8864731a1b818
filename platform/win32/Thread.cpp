#include "platform/Thread.h"

#include "platform/ModuleState.h"
#include "platform/win32/ModuleReference.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <atomic>
#include <utility>

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

// How long a thread whose routine has returned may take to be gone, reference included.
constexpr DWORD leaveLimit = 500;

using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);

// Null where the system has no such service. Found while the module is being loaded: a worker that
// looked for it would wait for the loader's lock.
constinit SetThreadDescription setDescription = nullptr;

void FindSystemFunctions() noexcept
{
    FindLoaderFunctions();
    setDescription = reinterpret_cast<SetThreadDescription>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
}

CKernelHandle CreateManualEvent() noexcept
{
    return CKernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

enum class EBeginning
{
    Awaited,
    Begun,
    GivenUp
};

} // namespace

struct CThread::State
{
    Routine routine;
    void* parameter;
    CKernelHandle entered = CreateManualEvent();
    CKernelHandle finished = CreateManualEvent();
    CKernelHandle never = CreateManualEvent();
    CKernelHandle thread{};
    CKernelHandle returner{}; // gives the reference of the beginning back; set before `entered`
    std::atomic<EBeginning> beginning{EBeginning::Awaited};
    std::atomic<bool> parked{false}; // set before `finished`

    // Keeps the module in the process until the thread has begun, which it cannot while anybody
    // holds the loader's lock.
    HMODULE reference = nullptr;

    // The thread's own share. Whoever ends a parked thread drops it in its place.
    std::shared_ptr<State> own{};

    State(Routine threadRoutine, void* threadParameter) noexcept
        : routine(threadRoutine), parameter(threadParameter)
    {}

    static DWORD WINAPI Run(void* state) noexcept;
    void GiveBackReference() noexcept;
    void Leave(HMODULE held, DWORD result) noexcept;
    void Park() noexcept;
    bool WaitFor(const CKernelHandle& event, DWORD limit) const noexcept;
    bool GiveUpBeginning() noexcept;
    void Terminate() noexcept;
    void WaitUntilGone() noexcept;
};

DWORD WINAPI CThread::State::Run(void* handed) noexcept
{
    State& state = *static_cast<State*>(handed);
    if (state.beginning.exchange(EBeginning::Begun) == EBeginning::GivenUp)
        state.Leave(std::exchange(state.reference, nullptr), 0);
    state.GiveBackReference();
    ::SetEvent(state.entered.Get());
    const DWORD result = state.routine(state.parameter);
    if (state.reference == nullptr)
        state.reference = TryTakeModuleReference(patienceAtEnd, nullptr);
    if (state.reference == nullptr)
        state.Park();
    ::SetEvent(state.finished.Get());
    state.Leave(std::exchange(state.reference, nullptr), result);
    return result;
}

// On another thread: the last reference ends the workers, and a worker cannot end itself. Without
// such a thread this one keeps the reference until its routine has returned.
void CThread::State::GiveBackReference() noexcept
{
    if (reference == nullptr)
        return;
    returner = GiveBackApart(reference);
    if (returner)
        reference = nullptr;
}

// The calling thread's last step; does not return when it holds the module. (A thread that never
// got a reference returns, and so waits for the loader's lock; it was given up by all.)
void CThread::State::Leave(HMODULE held, DWORD result) noexcept
{
    own.reset(); // nothing of the state may be used from here on
    if (held != nullptr)
        ::FreeLibraryAndExitThread(held, result);
    ::ExitThread(result);
}

// Signals the end and stands still, in one step of the system.
void CThread::State::Park() noexcept
{
    parked = true;
    ::SignalObjectAndWait(finished.Get(), never.Get(), INFINITE, FALSE);
}

// True when the event came; false after the limit or when the thread is gone.
bool CThread::State::WaitFor(const CKernelHandle& event, DWORD limit) const noexcept
{
    const HANDLE handles[] = {event.Get(), thread.Get()};
    return ::WaitForMultipleObjects(2, handles, FALSE, limit) == WAIT_OBJECT_0;
}

// True when the thread has not begun and never will run its routine.
bool CThread::State::GiveUpBeginning() noexcept
{
    const bool unloading = GetModuleState() == EModuleState::Unloading;
    EBeginning expected = EBeginning::Awaited;
    return !WaitFor(entered, unloading ? 0 : entryLimit) &&
           beginning.compare_exchange_strong(expected, EBeginning::GivenUp);
}

void CThread::State::Terminate() noexcept
{
    ::TerminateThread(thread.Get(), 1);
    ::WaitForSingleObject(thread.Get(), leaveLimit);
    own.reset();
}

// A thread that leaves while the module is being unloaded holds nothing of it but waits for the
// loader's lock, or is the one that unloads.
void CThread::State::WaitUntilGone() noexcept
{
    const HANDLE handles[] = {thread.Get(), returner.Get()};
    if (parked)
        Terminate();
    else if (GetModuleState() == EModuleState::Running)
        ::WaitForMultipleObjects(returner ? 2 : 1, handles, TRUE, leaveLimit);
}

CThread::CThread() noexcept = default;

CThread::~CThread() { Close(); }

bool CThread::CreateSuspended(Routine routine, void* parameter) noexcept
try
{
    if (state)
        return false;
    const auto created = std::make_shared<State>(routine, parameter);
    if (!created->entered || !created->finished || !created->never)
        return false;
    created->thread = CKernelHandle(
        ::CreateThread(nullptr, 0, &State::Run, created.get(), CREATE_SUSPENDED, nullptr));
    if (!created->thread)
        return false;
    FindSystemFunctions();
    created->reference = TakeModuleReference();
    created->own = created;
    state = created;
    return true;
}
catch (...)
{
    return false;
}

void CThread::Resume() noexcept { ::ResumeThread(state->thread.Get()); }

bool CThread::IsActive() const noexcept
{
    return state && ::WaitForSingleObject(state->finished.Get(), 0) != WAIT_OBJECT_0 &&
           ::WaitForSingleObject(state->thread.Get(), 0) != WAIT_OBJECT_0;
}

bool CThread::Join() noexcept
{
    if (!state || GetModuleState() == EModuleState::ProcessEnding || state->GiveUpBeginning())
        return true;
    const bool unloading = GetModuleState() == EModuleState::Unloading;
    const bool returned =
        state->WaitFor(state->finished, unloading ? returnLimitUnloading : returnLimit);
    if (returned)
        state->WaitUntilGone();
    else
        state->Terminate();
    return returned;
}

void CThread::Close() noexcept { state.reset(); }

void NameCurrentThread(const wchar_t* name) noexcept
{
    if (setDescription != nullptr)
        setDescription(::GetCurrentThread(), name);
}

void YieldThread() noexcept { ::SwitchToThread(); }

void PauseProcessor(unsigned times) noexcept
{
    for (unsigned i = 0; i < times; ++i)
        YieldProcessor();
}

} // namespace platform
