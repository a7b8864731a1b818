#include "tools/host/ImportWatch.h"

#include "tools/host/Process.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>
#include <wininet.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <winternl.h>

#pragma GCC diagnostic ignored "-Warray-bounds" // GCC 12 takes an address in a segment for null

namespace host {

namespace {

// --- whose thread, whose lock -------------------------------------------------------------------

std::atomic<DWORD> workers[256];
std::atomic<unsigned> workerCount{0};

bool IsWorker() noexcept
{
    for (const auto& worker : workers)
        if (worker == ::GetCurrentThreadId())
            return true;
    return false;
}

void RememberWorker(DWORD thread) noexcept { workers[workerCount++ % std::size(workers)] = thread; }

// Thread numbers are used again.
void ForgetWorker(DWORD thread) noexcept
{
    for (auto& worker : workers)
    {
        DWORD expected = thread;
        worker.compare_exchange_strong(expected, 0);
    }
}

// The thread that holds the loader's lock; 0 for none.
DWORD GetLoaderLockOwner() noexcept
{
    constexpr std::size_t loaderLockInPeb = 0x110; // of a 64-bit process
    auto* const peb = reinterpret_cast<std::byte*>(::NtCurrentTeb()->ProcessEnvironmentBlock);
    const auto* const lock = *reinterpret_cast<RTL_CRITICAL_SECTION**>(peb + loaderLockInPeb);
    return static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(lock->OwningThread));
}

bool HoldsLoaderLock() noexcept { return GetLoaderLockOwner() == ::GetCurrentThreadId(); }

// --- what is watched ----------------------------------------------------------------------------

std::atomic<long> violations{0};

void Report(std::atomic<bool>& seen, const char* function, const char* where) noexcept
{
    if (seen.exchange(true))
        return;
    ++violations;
    std::printf("violation: %s %s\n", function, where);
    std::fflush(stdout);
}

enum EForbidden : unsigned
{
    OnWorkers = 1,
    UnderLoaderLock = 2,
    OnWorkersWithoutLock = 4 // what needs the loader's lock is fine for who holds it already
};

#define WATCHED_FUNCTIONS(X)                                                                       \
    X(HttpAddRequestHeadersW, OnWorkers | UnderLoaderLock)                                         \
    X(HttpEndRequestW, OnWorkers | UnderLoaderLock)                                                \
    X(HttpOpenRequestW, OnWorkers | UnderLoaderLock)                                               \
    X(HttpQueryInfoW, OnWorkers | UnderLoaderLock)                                                 \
    X(HttpSendRequestExW, OnWorkers | UnderLoaderLock)                                             \
    X(HttpSendRequestW, OnWorkers | UnderLoaderLock)                                               \
    X(InternetCloseHandle, OnWorkers | UnderLoaderLock)                                            \
    X(InternetConnectW, OnWorkers | UnderLoaderLock)                                               \
    X(InternetGetConnectedState, OnWorkers | UnderLoaderLock)                                      \
    X(InternetOpenW, OnWorkers | UnderLoaderLock)                                                  \
    X(InternetReadFile, OnWorkers | UnderLoaderLock)                                               \
    X(InternetSetOptionW, OnWorkers | UnderLoaderLock)                                             \
    X(InternetWriteFile, OnWorkers | UnderLoaderLock)                                              \
    X(CoInitializeEx, OnWorkers | UnderLoaderLock)                                                 \
    X(CoCreateInstance, OnWorkers | UnderLoaderLock)                                               \
    X(CoUninitialize, OnWorkers | UnderLoaderLock)                                                 \
    X(Shell_NotifyIconW, OnWorkers | UnderLoaderLock)                                              \
    X(FlushFileBuffers, UnderLoaderLock)                                                           \
    X(CopyIcon, OnWorkers)                                                                         \
    X(DestroyIcon, OnWorkers)                                                                      \
    X(GetDesktopWindow, OnWorkers)                                                                 \
    X(GetSystemMetrics, OnWorkers)                                                                 \
    X(LoadIconW, OnWorkers)                                                                        \
    X(FreeLibrary, OnWorkersWithoutLock)                                                           \
    X(GetModuleHandleW, OnWorkersWithoutLock)                                                      \
    X(GetModuleHandleExW, OnWorkersWithoutLock)                                                    \
    X(GetModuleFileNameW, OnWorkersWithoutLock)                                                    \
    X(GetProcAddress, OnWorkersWithoutLock)                                                        \
    X(ExitThread, OnWorkersWithoutLock)

enum EFunction
{
#define ENUMERATOR(name, forbidden) e##name,
    WATCHED_FUNCTIONS(ENUMERATOR)
#undef ENUMERATOR
};

struct Watched
{
    const char* name;
    unsigned forbidden;
    void* original = nullptr;
    std::atomic<bool> seen{false};
};

Watched watched[] = {
#define WATCHED(name, forbidden) {#name, forbidden},
    WATCHED_FUNCTIONS(WATCHED)
#undef WATCHED
};

void Check(Watched& function) noexcept
{
    const bool worker = IsWorker();
    if ((function.forbidden & OnWorkers) != 0 && worker)
        Report(function.seen, function.name, "on a worker");
    if ((function.forbidden & OnWorkersWithoutLock) != 0 && worker && !HoldsLoaderLock())
        Report(function.seen, function.name, "on a worker");
    if ((function.forbidden & UnderLoaderLock) != 0 && HoldsLoaderLock())
        Report(function.seen, function.name, "under the loader's lock");
}

// What the module calls instead of the system's function.
template <EFunction Index, class Function>
struct Stub;

template <EFunction Index, class Result, class... Arguments>
struct Stub<Index, Result(Arguments...)>
{
    static Result Call(Arguments... arguments)
    {
        Check(watched[Index]);
        return reinterpret_cast<Result (*)(Arguments...)>(watched[Index].original)(arguments...);
    }
};

// --- threads and memory -------------------------------------------------------------------------

HANDLE WINAPI CreateWatchedThread(SECURITY_ATTRIBUTES* security, SIZE_T stack,
                                  LPTHREAD_START_ROUTINE routine, void* parameter, DWORD flags,
                                  DWORD*)
{
    DWORD number = 0;
    const HANDLE thread =
        ::CreateThread(security, stack, routine, parameter, flags | CREATE_SUSPENDED, &number);
    ForgetWorker(number);
    if ((flags & CREATE_SUSPENDED) != 0)
        RememberWorker(number);
    else if (thread != nullptr)
        ::ResumeThread(thread);
    return thread;
}

std::atomic<long> wakeUps{0};

// Waits as `wait` does, with a limit; a wait that does not end at once ends by waking up.
template <class Wait>
DWORD WaitAndCount(DWORD limit, Wait wait)
{
    const DWORD result = wait(0);
    if (limit == 0 || result != WAIT_TIMEOUT)
        return result;
    const DWORD late = wait(limit);
    if (IsWorker())
        ++wakeUps;
    return late;
}

DWORD WINAPI WaitForOne(HANDLE object, DWORD limit)
{
    return WaitAndCount(limit, [&](DWORD time) { return ::WaitForSingleObject(object, time); });
}

DWORD WINAPI WaitForSome(DWORD count, const HANDLE* objects, BOOL all, DWORD limit)
{
    return WaitAndCount(
        limit, [&](DWORD time) { return ::WaitForMultipleObjects(count, objects, all, time); });
}

void WINAPI SleepAndCount(DWORD time)
{
    ::Sleep(time);
    if (time != 0 && IsWorker())
        ++wakeUps;
}

void WINAPI FreeLibraryAndExitWatchedThread(HMODULE module, DWORD exitCode)
{
    ForgetWorker(::GetCurrentThreadId());
    ::FreeLibraryAndExitThread(module, exitCode);
}

// A worker parks itself, to be ended, when the loader's lock was not to be had; whoever had it may
// have let it go since.
BOOL WINAPI TerminateWatchedThread(HANDLE thread, DWORD exitCode)
{
    static std::atomic<bool> seen{false};
    if (GetLoaderLockOwner() == 0 && !HasHeldLoaderLock())
        Report(seen, "TerminateThread", "although nobody loads or unloads anything");
    ForgetWorker(::GetThreadId(thread));
    return ::TerminateThread(thread, exitCode);
}

std::atomic<long> allocations{0};
std::atomic<long> firstStarved{0};
std::atomic<long> lastStarved{0};
std::atomic<long> starved{0};

bool MayAllocate() noexcept
{
    const long number = ++allocations;
    if (number < firstStarved || number > lastStarved)
        return true;
    ++starved;
    return false;
}

void* Allocate(std::size_t size) { return MayAllocate() ? std::malloc(size) : nullptr; }

void* AllocateZeroed(std::size_t count, std::size_t size)
{
    return MayAllocate() ? std::calloc(count, size) : nullptr;
}

void* Reallocate(void* block, std::size_t size)
{
    return MayAllocate() ? std::realloc(block, size) : nullptr;
}

// --- the module's table of imports --------------------------------------------------------------

struct Replacement
{
    const char* name;
    void* function;
    void** original; // null where the replacement calls the system's by itself
};

template <class Function>
void* AddressOf(Function* function)
{
    return reinterpret_cast<void*>(function);
}

const Replacement replacements[] = {
    {"CreateThread", AddressOf(&CreateWatchedThread), nullptr},
    {"TerminateThread", AddressOf(&TerminateWatchedThread), nullptr},
    {"WaitForSingleObject", AddressOf(&WaitForOne), nullptr},
    {"WaitForMultipleObjects", AddressOf(&WaitForSome), nullptr},
    {"Sleep", AddressOf(&SleepAndCount), nullptr},
    {"FreeLibraryAndExitThread", AddressOf(&FreeLibraryAndExitWatchedThread), nullptr},
    {"malloc", AddressOf(&Allocate), nullptr},
    {"calloc", AddressOf(&AllocateZeroed), nullptr},
    {"realloc", AddressOf(&Reallocate), nullptr},
#define REPLACEMENT(name, forbidden)                                                               \
    {#name, AddressOf(&Stub<e##name, decltype(::name)>::Call), &watched[e##name].original},
    WATCHED_FUNCTIONS(REPLACEMENT)
#undef REPLACEMENT
};

void Replace(const char* name, void*& slot) noexcept
{
    for (const Replacement& replacement : replacements)
    {
        DWORD protection = 0;
        if (std::strcmp(replacement.name, name) != 0 ||
            !::VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &protection))
            continue;
        if (replacement.original != nullptr)
            *replacement.original = slot;
        slot = replacement.function;
        ::VirtualProtect(&slot, sizeof(slot), protection, &protection);
    }
}

void ReplaceImports(std::byte* base) noexcept
{
    const auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library =
             reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         library->Name != 0; ++library)
    {
        auto* name = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + library->OriginalFirstThunk);
        auto* slot = reinterpret_cast<void**>(base + library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot)
            if (!IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal))
                Replace(
                    reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData)->Name,
                    *slot);
    }
}

// The loader tells of a module when it is mapped and its imports are found, before it runs.
struct LoadNotification
{
    ULONG flags;
    const UNICODE_STRING* fullName;
    const UNICODE_STRING* baseName;
    std::byte* base;
    ULONG size;
};

void CALLBACK OnLoad(ULONG reason, const LoadNotification* loaded, void*)
{
    constexpr ULONG isLoaded = 1;
    if (reason == isLoaded && ::_wcsicmp(loaded->baseName->Buffer, L"ZoTracker.dll") == 0)
        ReplaceImports(loaded->base);
}

} // namespace

void WatchImports() noexcept
{
    using Callback = void(CALLBACK*)(ULONG, const LoadNotification*, void*);
    using Register = LONG(NTAPI*)(ULONG flags, Callback callback, void* context, void** cookie);
    void* cookie = nullptr;
    const auto registerCallback = reinterpret_cast<Register>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification")));
    if (registerCallback == nullptr || registerCallback(0, &OnLoad, nullptr, &cookie) < 0)
        std::fputs("host: this system does not tell of loaded modules; nothing is watched\n",
                   stderr);
}

void StarveAllocations(long first, long count) noexcept
{
    starved = 0;
    lastStarved = 0;
    allocations = 0;
    firstStarved = first;
    lastStarved = first + count - 1;
}

long GetStarvedCount() noexcept { return starved; }

long GetViolationCount() noexcept { return violations; }

long GetWakeUpCount() noexcept { return wakeUps; }

} // namespace host
