#include "tools/host/Process.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <atomic>
#include <string_view>
#include <thread>
#include <vector>

namespace host {

namespace {

using LockLoader = LONG(WINAPI*)(ULONG flags, ULONG* disposition, ULONG_PTR* cookie);
using UnlockLoader = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);

// The runtime's latch loses a wake-up now and then where it has no futex.
class CEvent
{
public:
    CEvent() : handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~CEvent() { ::CloseHandle(handle); }
    CEvent(const CEvent&) = delete;
    CEvent& operator=(const CEvent&) = delete;

    void Set() const { ::SetEvent(handle); }
    void Wait() const { ::WaitForSingleObject(handle, INFINITE); }

private:
    HANDLE handle;
};

template <class Function>
Function FindInNtdll(const char* name)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name)));
}

std::atomic<ULONGLONG> lastUnlock{0}; // on the clock of GetTickCount64

std::size_t MeasureHeap(HANDLE heap)
{
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    ::HeapLock(heap);
    while (::HeapWalk(heap, &entry))
        bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
    ::HeapUnlock(heap);
    return bytes;
}

} // namespace

std::size_t MeasureHeaps()
{
    std::vector<HANDLE> heaps(::GetProcessHeaps(0, nullptr) + 8);
    heaps.resize(std::min<std::size_t>(
        ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()), heaps.size()));
    std::size_t bytes = 0;
    for (const HANDLE heap : heaps)
        bytes += MeasureHeap(heap);
    return bytes;
}

// By asking for one after the other: Wine's GetProcessHandleCount counts nothing, and its server
// does not survive the system's table while processes come and go. Without keys of the registry:
// Wine keeps one open for each look into HKEY_CLASSES_ROOT through a view.
DWORD CountHandles()
{
    using Query = LONG(NTAPI*)(HANDLE handle, ULONG what, void* into, ULONG bytes, ULONG* needed);
    struct TypeInformation
    {
        UNICODE_STRING name;
        std::byte rest[512];
    };
    constexpr ULONG typeInformation = 2;
    constexpr ULONG_PTR step = 4, enough = 512 * step; // behind the last one
    const auto query = FindInNtdll<Query>("NtQueryObject");
    DWORD count = 0;
    for (ULONG_PTR last = 0, number = step; number < last + enough; number += step)
    {
        TypeInformation type;
        if (query(reinterpret_cast<HANDLE>(number), typeInformation, &type, sizeof(type), nullptr) <
            0)
            continue;
        last = number;
        const std::wstring_view name(type.name.Buffer, type.name.Length / sizeof(wchar_t));
        count += name != L"Key";
    }
    return count;
}

DWORD CountThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    DWORD count = 0;
    for (BOOL found = ::Thread32First(snapshot, &entry); found;
         found = ::Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId();
    ::CloseHandle(snapshot);
    return count;
}

void RunUnderLoaderLock(const std::function<void()>& work, DWORD milliseconds)
{
    const CEvent done;
    std::thread([&done, &work, milliseconds] {
        ULONG_PTR cookie = 0;
        FindInNtdll<LockLoader>("LdrLockLoaderLock")(0, nullptr, &cookie);
        work();
        const auto unlock = FindInNtdll<UnlockLoader>("LdrUnlockLoaderLock");
        done.Set();
        ::Sleep(milliseconds);
        lastUnlock = ::GetTickCount64();
        unlock(0, cookie);
    }).detach();
    done.Wait();
}

bool HasHeldLoaderLock() noexcept
{
    constexpr ULONGLONG within = 500; // milliseconds
    return lastUnlock != 0 && ::GetTickCount64() - lastUnlock < within;
}

void EndProcessAfter(DWORD milliseconds)
{
    std::thread([milliseconds] {
        ::Sleep(milliseconds);
        ::TerminateProcess(::GetCurrentProcess(), 0);
    }).detach();
}

void RunOnThreads(int count, const std::function<void()>& work)
{
    const CEvent start;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            start.Wait();
            work();
        });
    start.Set();
    for (std::thread& thread : threads)
        thread.join();
}

void CBystander::Start()
{
    begun = ::GetTickCount64();
    std::thread([this] { Run(); }).detach();
}

ULONGLONG CBystander::TakeLongestWait() noexcept
{
    const ULONGLONG present = ::GetTickCount64() - begun;
    return std::max(longest.exchange(0), present);
}

void CBystander::Run() noexcept
{
    for (;;)
    {
        begun = ::GetTickCount64();
        ::GetModuleHandleW(L"nothing.dll");
        ::HeapFree(::GetProcessHeap(), 0, ::HeapAlloc(::GetProcessHeap(), 0, 64));
        longest = std::max<ULONGLONG>(longest, ::GetTickCount64() - begun);
        ::Sleep(20);
    }
}

} // namespace host
