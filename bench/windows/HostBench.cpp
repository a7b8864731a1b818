// What loading the real module and getting both its trackers costs a real host, against loading a
// module that imports the same system libraries and does nothing, in the same run.
//
// usage: host_bench MODULE.dll STUB.dll [ROUNDS]
#include "tools/host/Module.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

double Now()
{
    LARGE_INTEGER ticks, frequency;
    ::QueryPerformanceCounter(&ticks);
    ::QueryPerformanceFrequency(&frequency);
    return 1e9 * static_cast<double>(ticks.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double TakeMedian(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// A module whose workers are busy leaves the process a moment after its last FreeLibrary.
void UnloadAndWait(host::CModule& loader)
{
    loader.Unload();
    while (::GetModuleHandleW(L"ZoTracker.dll") != nullptr)
        ::Sleep(1);
}

// Where the module looks for the computer's identifier first.
const wchar_t* const identifierKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";

// An ordinary user's process finds an identifier that was made once. An elevated one looks in
// another view of the registry than it writes to, and makes a new one at each load.
void PutIdentifier(bool isFound)
{
    const wchar_t id[] = L"00112233445566778899aabbccddeeff";
    if (isFound)
        ::RegSetKeyValueW(HKEY_CLASSES_ROOT, identifierKey, L"ID", REG_SZ, id, sizeof(id));
    else
        ::RegDeleteKeyValueW(HKEY_CLASSES_ROOT, identifierKey, L"ID");
}

// Wine's server writes the names of events into its log: bench/run-windows counts the requests
// between two of them.
void Mark(const wchar_t* name) { ::CloseHandle(::CreateEventW(nullptr, TRUE, FALSE, name)); }

void BenchLoading(const char* what, const wchar_t* modulePath, const wchar_t* stubPath, int rounds)
{
    std::vector<double> times, floors;
    for (int round = 0; round < rounds; ++round)
    {
        Mark(L"bench-stub");
        const double stubStart = Now();
        const HMODULE stub = ::LoadLibraryW(stubPath);
        floors.push_back(Now() - stubStart);
        Mark(L"bench-end");
        ::FreeLibrary(stub);
        Mark(L"bench-module");
        const double start = Now();
        host::CModule loader(modulePath);
        loader.GetTracker();
        loader.GetKpiTracker();
        times.push_back(Now() - start);
        Mark(L"bench-end");
        UnloadAndWait(loader);
    }
    const double time = TakeMedian(times);
    const double floor = TakeMedian(floors);
    std::printf("%-34s %9.1f ms %9.1f ms %9.1f ms\n", what, time / 1e6, floor / 1e6,
                (time - floor) / 1e6);
}

// What the load's time depends on most.
void PrintTimeOfRequest()
{
    const HANDLE event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    constexpr int requests = 10'000;
    const double start = Now();
    for (int i = 0; i < requests; ++i)
        ::SetEvent(event);
    std::printf("a request to Wine's server takes %.1f us\n", (Now() - start) / requests / 1e3);
    ::CloseHandle(event);
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 3 && count != 4)
    {
        std::fputs("usage: host_bench MODULE.dll STUB.dll [ROUNDS]\n", stderr);
        return 2;
    }
    const int rounds = count == 4 ? _wtoi(arguments[3]) : 15;
    std::printf("%-34s %12s %12s %12s\n", "", "load", "stub", "beyond it");
    for (const bool isFound : {true, false})
    {
        PutIdentifier(isFound);
        BenchLoading(isFound ? "identifier found" : "identifier made", arguments[1], arguments[2],
                     rounds);
    }
    PrintTimeOfRequest();
    return 0;
}
