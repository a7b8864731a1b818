// What a tracking call of five texts costs the host, and what the take of its hit costs the worker:
// this module's way beside the plain one (a mutex, five strings, a deque) in one run, their rounds
// taking turns. Built for Linux, and for Windows of what the DLL is made of.
//
// The taker is a thread of its own, as in the module, and takes between the calls: the length
// stays. Clocks of some machines move in steps of ten nanoseconds, so the median is that of batches
// of ten calls; the 99th percentile is that of single ones.
#include "bench/MemoryInUse.h"
#include "frame/TrackerBase.h"

#include <x86intrin.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const wchar_t* category = L"Settings page";
constexpr const wchar_t* action = L"Theme changed";
constexpr const wchar_t* label = L"dark";
constexpr const wchar_t* value = L"12";
constexpr const wchar_t* page = L"Settings";

// A tracker whose worker is never started.
class CModuleWay final : public frame::CTrackerBase
{
public:
    CModuleWay() : CTrackerBase(L"idle") {}

    void SetTrackingEnabled(bool) noexcept override {}
    void DisableIdlePageviews(bool) noexcept override {}
    void SetContinueSession(bool) noexcept override {}
    void TrackPurchase(TrackerText, TrackerText, double, TrackerText,
                       std::int32_t) noexcept override
    {}

    void Report() { TrackEvent(category, action, label, value, page); }
    void Take() { const frame::TrackingHit taken = queue.Take(); }

private:
    void RunWorker() override {}
    void ReadConfigurationOf(const std::wstring&) override {}
    void ChooseProductName(std::wstring) override {}
};

class CPlainWay
{
public:
    void Report()
    {
        frame::TrackingHit hit{frame::EHitType::Event, value, category, label, action, page, false};
        const std::lock_guard lock(mutex);
        hits.push_back(std::move(hit));
    }

    void Take()
    {
        frame::TrackingHit taken;
        const std::lock_guard lock(mutex);
        if (hits.empty())
            return;
        taken = std::move(hits.front());
        hits.pop_front();
    }

private:
    std::mutex mutex;
    std::deque<frame::TrackingHit> hits;
};

// The module's records behind a critical section that is waited for.
class CWaitingWay
{
public:
    void Report()
    {
        const VnOSAL::VnCriticalSectionLock lock(section);
        hits.Append({frame::EHitType::Event, value, category, label, action, page, false});
    }

    void Take()
    {
        frame::PackedHit taken;
        {
            const VnOSAL::VnCriticalSectionLock lock(section);
            if (hits.IsEmpty())
                return;
            hits.TakeOldest(taken);
        }
        const frame::TrackingHit hit = taken.Unpack();
    }

private:
    VnOSAL::VnCriticalSection section;
    frame::CPackedHits hits;
};

using Ticks = std::uint64_t;

double MeasureNanosecondsPerTick()
{
    using namespace std::chrono;
    const auto start = steady_clock::now();
    const Ticks first = __rdtsc();
    while (steady_clock::now() - start < 200ms)
        ;
    const Ticks ticks = __rdtsc() - first;
    return static_cast<double>(duration_cast<nanoseconds>(steady_clock::now() - start).count()) /
           static_cast<double>(ticks);
}

using Times = std::vector<double>;

struct Figures
{
    double p50 = 0, p99 = 0;
};

double TakePercentile(Times& times, std::size_t percent)
{
    const auto at = times.begin() + static_cast<std::ptrdiff_t>(times.size() * percent / 100);
    std::nth_element(times.begin(), at, times.end());
    return *at;
}

constexpr int batch = 10;

struct Load
{
    int length; // hits that stay in the queue
    int threads;
    bool isStorm;
};

// What one way costs under one load.
template <class Way>
class CCase
{
public:
    CCase(const Load& caseLoad, double scale) : load(caseLoad), nanosecondsPerTick(scale)
    {
        for (int i = 0; i < load.length; ++i)
            way->Report();
    }

    void RunRound()
    {
        std::vector<HostTimes> times(static_cast<std::size_t>(load.threads));
        std::atomic<int> ready = 0, working = load.threads;
        std::vector<std::thread> hosts;
        for (HostTimes& own : times)
            hosts.emplace_back([&] {
                ++ready;
                while (ready < load.threads)
                    std::this_thread::yield();
                for (int i = 0; i < GetBatches() / load.threads; ++i)
                    ReportBatch(own);
                --working;
            });
        Times takes = TakeBatches(working);
        for (std::thread& host : hosts)
            host.join();
        HostTimes all;
        for (const HostTimes& own : times)
        {
            all.batches.insert(all.batches.end(), own.batches.begin(), own.batches.end());
            all.singles.insert(all.singles.end(), own.singles.begin(), own.singles.end());
        }
        p50.push_back(TakePercentile(all.batches, 50));
        p99.push_back(TakePercentile(all.singles, 99));
        take.push_back(TakePercentile(takes, 50));
    }

    // The medians of the rounds.
    Figures GetCall() { return {TakePercentile(p50, 50), TakePercentile(p99, 50)}; }
    double GetTake() { return TakePercentile(take, 50); }

private:
    struct HostTimes
    {
        Times batches, singles;
    };

    int GetBatches() const { return load.isStorm ? 16'000 : 1'600; }

    double Since(Ticks start) const
    {
        return nanosecondsPerTick * static_cast<double>(__rdtsc() - start);
    }

    void ReportBatch(HostTimes& times)
    {
        Ticks start = __rdtsc();
        way->Report();
        times.singles.push_back(Since(start));
        start = __rdtsc();
        for (int i = 0; i < batch; ++i)
            way->Report();
        times.batches.push_back(Since(start) / batch);
        const int mine = ++given;
        while (!load.isStorm && taken - mine < 0)
            std::this_thread::yield();
    }

    Times TakeBatches(const std::atomic<int>& working)
    {
        Times takes;
        while (working > 0 || given > taken)
        {
            if (given == taken || (load.isStorm && working > 0))
            {
                if (load.isStorm)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                else
                    std::this_thread::yield();
                continue;
            }
            const Ticks start = __rdtsc();
            for (int i = 0; i <= batch; ++i)
                way->Take();
            takes.push_back(Since(start) / (batch + 1));
            ++taken;
        }
        return takes;
    }

    const Load load;
    const double nanosecondsPerTick;
    const std::unique_ptr<Way> way = std::make_unique<Way>();
    std::atomic<int> given = 0, taken = 0; // batches
    Times p50, p99, take;                  // by round
};

void PrintRow(const char* what, const Load& load, Figures module, Figures plain, Figures waiting)
{
    std::printf("%-9s %7d %7d %8.0f %6.0f %8.0f %6.0f %8.0f %6.0f %7.2f\n", what, load.length,
                load.threads, module.p50, module.p99, plain.p50, plain.p99, waiting.p50,
                waiting.p99, module.p50 / plain.p50);
    std::fflush(stdout);
}

void BenchLoad(const Load& load, double scale)
{
    CCase<CModuleWay> module(load, scale);
    CCase<CPlainWay> plain(load, scale);
    CCase<CWaitingWay> waiting(load, scale);
    for (int round = 0; round < 9; ++round)
    {
        module.RunRound();
        plain.RunRound();
        waiting.RunRound();
    }
    PrintRow(load.isStorm ? "storm" : "call", load, module.GetCall(), plain.GetCall(),
             waiting.GetCall());
    const auto both = [](auto& way) { return Figures{way.GetCall().p50 + way.GetTake(), 0}; };
    if (!load.isStorm)
        PrintRow("and take", load, both(module), both(plain), both(waiting));
}

// The memory that one more queued hit takes.
template <class Way>
double MeasureBytes()
{
    constexpr int count = 200'000;
    const std::size_t before = GetMemoryInUse();
    Way way;
    for (int i = 0; i < count; ++i)
        way.Report();
    return static_cast<double>(GetMemoryInUse() - before) / count;
}

} // namespace

int main()
{
    const double scale = MeasureNanosecondsPerTick();
    std::printf("bytes a hit: %.0f, plain %.0f\n\n", MeasureBytes<CModuleWay>(),
                MeasureBytes<CPlainWay>());
    std::printf("%-9s %7s %7s %15s %15s %15s\n%-9s %7s %7s %8s %6s %8s %6s %8s %6s %7s\n", "", "",
                "", "module", "plain", "section", "ns", "queued", "threads", "p50", "p99", "p50",
                "p99", "p50", "p99", "ratio");
    for (const bool isStorm : {false, true})
        for (const int length : {0, 100'000})
            for (const int threads : {1, 4, 16})
                BenchLoad({length, threads, isStorm}, scale);
    return 0;
}
