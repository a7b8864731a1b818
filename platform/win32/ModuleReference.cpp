#include "platform/win32/ModuleReference.h"

#include "platform/ModuleState.h"

#include <algorithm>

extern "C" IMAGE_DOS_HEADER __ImageBase; // the linker's name for the start of this module

namespace platform {

namespace {

using LockFunction = LONG(WINAPI*)(ULONG flags, ULONG* disposition, ULONG_PTR* cookie);
using UnlockFunction = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);
using ShutdownFunction = BOOLEAN(WINAPI*)();

constexpr ULONG tryOnly = 2;
constexpr ULONG acquired = 1; // disposition

constexpr DWORD pauseBetweenTries = 2; // milliseconds

constinit LockFunction lockLoader = nullptr;
constinit UnlockFunction unlockLoader = nullptr;
constinit ShutdownFunction isShutdownInProgress = nullptr;

template <class Function>
void Find(HMODULE module, const char* name, Function& function) noexcept
{
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

// Holds the loader's lock for its scope if it can be had at once, and counts as holding it on a
// system that has none to offer.
class CLoaderTryLock
{
public:
    CLoaderTryLock() noexcept
    {
        ULONG disposition = 0;
        held = lockLoader == nullptr ||
               (lockLoader(tryOnly, &disposition, &cookie) >= 0 && disposition == acquired);
    }
    ~CLoaderTryLock()
    {
        if (held && unlockLoader != nullptr)
            unlockLoader(0, cookie);
    }
    CLoaderTryLock(const CLoaderTryLock&) = delete;
    CLoaderTryLock& operator=(const CLoaderTryLock&) = delete;

    explicit operator bool() const noexcept { return held; }

private:
    ULONG_PTR cookie = 0;
    bool held = false;
};

} // namespace

void FindLoaderFunctions() noexcept
{
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    if (isShutdownInProgress != nullptr || ntdll == nullptr)
        return;
    Find(ntdll, "LdrUnlockLoaderLock", unlockLoader);
    if (unlockLoader != nullptr)
        Find(ntdll, "LdrLockLoaderLock", lockLoader);
    Find(ntdll, "RtlDllShutdownInProgress", isShutdownInProgress);
}

bool IsProcessShuttingDown() noexcept
{
    return isShutdownInProgress != nullptr && isShutdownInProgress();
}

HMODULE TakeModuleReference() noexcept
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&__ImageBase), &module);
    return module;
}

// Since Windows 8 an unloading lets the module's count fall before it takes the lock. Then the
// loader refuses the reference here: a count that has reached zero is not raised again. Nothing
// else may stand under this lock.
HMODULE TryTakeModuleReference(std::chrono::milliseconds patience, const CStopSignal* stop) noexcept
{
    const ULONGLONG start = ::GetTickCount64();
    for (;;)
    {
        if (const CLoaderTryLock lock; lock && GetModuleState() == EModuleState::Running)
            return TakeModuleReference();
        const bool ends = stop != nullptr && stop->IsRequested();
        const auto limit = ends ? std::min(patience, patienceAtEnd) : patience;
        if (::GetTickCount64() - start >= static_cast<ULONGLONG>(limit.count()) ||
            GetModuleState() != EModuleState::Running)
            return nullptr;
        ::Sleep(pauseBetweenTries);
    }
}

// In the system's code alone: this module's may be gone by the end of it.
CKernelHandle GiveBackApart(HMODULE reference) noexcept
{
    const auto routine =
        reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(&::FreeLibrary));
    return CKernelHandle(::CreateThread(nullptr, 0, routine, reference, 0, nullptr));
}

} // namespace platform
