#include "platform/win32/LoaderLock.h"

#include <windows.h>

#include <memory>
#include <new>

extern "C" IMAGE_DOS_HEADER __ImageBase; // the linker's name for the start of this module

namespace platform {

namespace {

using LockFunction = LONG(WINAPI*)(ULONG flags, ULONG* disposition, ULONG_PTR* cookie);
using UnlockFunction = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);

constexpr ULONG tryOnly = 2;
constexpr ULONG acquired = 1; // disposition

constinit LockFunction lockLoader = nullptr;
constinit UnlockFunction unlockLoader = nullptr;

template <class Function>
Function Find(HMODULE module, const char* name) noexcept
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

struct PinnedCall
{
    HMODULE pinned;
    void (*callback)(void*);
    void* parameter;
};

// The pool could hold the module itself (SetThreadpoolCallbackLibrary), but Wine's takes and gives
// back that reference under the pool's own lock, where the unloading must not happen.
void CALLBACK RunPinnedCall(PTP_CALLBACK_INSTANCE instance, void* handed)
{
    const std::unique_ptr<PinnedCall> call(static_cast<PinnedCall*>(handed));
    ::FreeLibraryWhenCallbackReturns(instance, call->pinned);
    call->callback(call->parameter);
}

} // namespace

void* PinModule() noexcept
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&__ImageBase), &module);
    return module;
}

bool RunPinned(void* pinned, void (*callback)(void*), void* parameter) noexcept
{
    std::unique_ptr<PinnedCall> call(
        new (std::nothrow) PinnedCall{static_cast<HMODULE>(pinned), callback, parameter});
    TP_CALLBACK_ENVIRON environment;
    ::InitializeThreadpoolEnvironment(&environment);
    ::SetThreadpoolCallbackRunsLong(&environment);
    if (!call || !::TrySubmitThreadpoolCallback(&RunPinnedCall, call.get(), &environment))
        return false;
    call.release();
    return true;
}

void PrepareLoaderLock() noexcept
{
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    if (lockLoader != nullptr || ntdll == nullptr)
        return;
    unlockLoader = Find<UnlockFunction>(ntdll, "LdrUnlockLoaderLock");
    if (unlockLoader != nullptr)
        lockLoader = Find<LockFunction>(ntdll, "LdrLockLoaderLock");
}

CLoaderTryLock::CLoaderTryLock() noexcept
{
    static_assert(sizeof(cookie) == sizeof(ULONG_PTR));
    ULONG disposition = 0;
    if (lockLoader == nullptr)
        held = true;
    else if (lockLoader(tryOnly, &disposition, &cookie) >= 0)
        held = disposition == acquired;
}

CLoaderTryLock::~CLoaderTryLock()
{
    if (held && unlockLoader != nullptr)
        unlockLoader(0, cookie);
}

} // namespace platform
