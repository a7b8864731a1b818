// What the real module costs a real host, against a floor in the same run: a tracking call against
// pushing the same strings into a mutex-guarded std::deque, loading the module and getting its
// tracker against loading a module that does nothing.
//
// usage: host_bench MODULE.dll STUB.dll
#include "tools/host/Module.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
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

void Print(const char* what, double time, double floor, const char* unit, double scale)
{
    std::printf("%-34s %12.1f %12.1f %s %8.2f\n", what, time / scale, floor / scale, unit,
                time / floor);
    std::fflush(stdout);
}

// A module whose workers are busy leaves the process a moment after its last FreeLibrary.
void UnloadAndWait(host::CModule& loader)
{
    loader.Unload();
    while (::GetModuleHandleW(L"ZoTracker.dll") != nullptr)
        ::Sleep(1);
}

struct Hit
{
    int type;
    std::wstring field1, field2, field3, field4, field5;
    bool onceOnly;
};

constexpr int callsPerRound = 20'000;

template <class Call>
double TimeCalls(Call&& call)
{
    const double start = Now();
    for (int i = 0; i < callsPerRound; ++i)
        call();
    return (Now() - start) / callsPerRound;
}

// Rounds of both take turns, so that what else the machine does hits both.
void BenchCalls(const char* what, ITracker& tracker, int length)
{
    std::mutex mutex;
    std::deque<Hit> hits;
    const auto push = [&] {
        Hit hit{2, L"12", L"Settings page", L"dark", L"Theme changed", L"Settings", false};
        const std::lock_guard lock(mutex);
        hits.push_back(std::move(hit));
    };
    const auto report = [&] {
        tracker.TrackEvent(L"Settings page", L"Theme changed", L"dark", L"12", L"Settings");
    };
    for (int i = 0; i < length; ++i)
    {
        push();
        report();
    }
    std::vector<double> times, floors;
    for (int round = 0; round < 7; ++round)
    {
        times.push_back(TimeCalls(report));
        floors.push_back(TimeCalls(push));
    }
    Print(what, TakeMedian(times), TakeMedian(floors), "ns", 1);
}

void BenchLoading(const wchar_t* modulePath, const wchar_t* stubPath)
{
    std::vector<double> times, floors;
    for (int round = 0; round < 15; ++round)
    {
        const double start = Now();
        host::CModule loader(modulePath);
        loader.GetKpiTracker();
        times.push_back(Now() - start);
        UnloadAndWait(loader);
        const double stubStart = Now();
        const HMODULE stub = ::LoadLibraryW(stubPath);
        floors.push_back(Now() - stubStart);
        ::FreeLibrary(stub);
    }
    Print("load and first get", TakeMedian(times), TakeMedian(floors), "ms", 1e6);
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 3)
    {
        std::fputs("usage: host_bench MODULE.dll STUB.dll\n", stderr);
        return 2;
    }
    std::printf("%-34s %12s %12s    %8s\n", "", "time", "floor", "ratio");
    BenchLoading(arguments[1], arguments[2]);
    for (const int length : {0, 1000, 1'000'000})
    {
        host::CModule loader(arguments[1]);
        ITracker* const tracker = loader.GetKpiTracker();
        if (tracker == nullptr)
        {
            std::fputs("host_bench: the module has no tracker\n", stderr);
            return 1;
        }
        const std::string what = "tracking call, " + std::to_string(length) + " queued";
        BenchCalls(what.c_str(), *tracker, length);
        UnloadAndWait(loader);
    }
    return 0;
}
