// What a tracking call costs the host, and what taking a hit costs the worker.
#include "frame/Hits.h"
#include "frame/TrackerBase.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

namespace {

using frame::TrackingHit;

constexpr const wchar_t* category = L"Settings page";
constexpr const wchar_t* action = L"Theme changed";
constexpr const wchar_t* label = L"dark";
constexpr const wchar_t* value = L"12";
constexpr const wchar_t* page = L"Settings";

// A tracker whose worker never takes anything.
class CIdleTracker final : public frame::CTrackerBase
{
public:
    CIdleTracker() : CTrackerBase(&Run, L"idle") {}

    void SetTrackingEnabled(bool) noexcept override {}
    void Initialize(const wchar_t*) noexcept override {}
    void DisableIdlePageviews(bool) noexcept override {}
    void SetContinueSession(bool) noexcept override {}
    void TrackPurchase(TrackerText, TrackerText, double, TrackerText,
                       std::int32_t) noexcept override
    {}
    void SetProductName(TrackerText) noexcept override {}

    void Report() { TrackEvent(category, action, label, value, page); }
    bool Take() { return queue.Take().type != frame::EHitType::None; }

private:
    static std::uint32_t Run(frame::ThreadParam*) { return 0; }
};

// The same strings pushed into a mutex-guarded std::deque: no tracking call can cost less.
class CFloor
{
public:
    void Report()
    {
        TrackingHit hit{frame::EHitType::Event, value, category, label, action, page, false};
        const std::lock_guard lock(mutex);
        hits.push_back(std::move(hit));
    }

    bool Take()
    {
        const std::lock_guard lock(mutex);
        if (hits.empty())
            return false;
        const TrackingHit taken = std::move(hits.front());
        hits.pop_front();
        return true;
    }

private:
    std::mutex mutex;
    std::deque<TrackingHit> hits;
};

template <class Queue>
void Call(benchmark::State& state)
{
    Queue queue;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        queue.Report();
    for (auto _ : state)
        queue.Report();
}

template <class Queue>
void CallWhileTaking(benchmark::State& state)
{
    Queue queue;
    std::atomic<bool> stop = false;
    std::thread worker([&] {
        while (!stop)
            if (!queue.Take())
                std::this_thread::yield();
    });
    for (auto _ : state)
        queue.Report();
    stop = true;
    worker.join();
}

// One hit put back for each taken, so that the length stays.
template <class Queue>
void Take(benchmark::State& state)
{
    Queue queue;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        queue.Report();
    for (auto _ : state)
    {
        queue.Report();
        benchmark::DoNotOptimize(queue.Take());
    }
}

constexpr int iterations = 200'000;

BENCHMARK(Call<CIdleTracker>)
    ->Name("Call")
    ->Arg(0)
    ->Arg(1000)
    ->Arg(1'000'000)
    ->Iterations(iterations);
BENCHMARK(Call<CFloor>)
    ->Name("CallFloor")
    ->Arg(0)
    ->Arg(1000)
    ->Arg(1'000'000)
    ->Iterations(iterations);
BENCHMARK(CallWhileTaking<CIdleTracker>)->Name("CallWhileTaking")->Iterations(iterations);
BENCHMARK(CallWhileTaking<CFloor>)->Name("CallWhileTakingFloor")->Iterations(iterations);
BENCHMARK(Take<CIdleTracker>)
    ->Name("CallAndTake")
    ->Arg(1)
    ->Arg(1000)
    ->Arg(1'000'000)
    ->Iterations(iterations);
BENCHMARK(Take<CFloor>)
    ->Name("CallAndTakeFloor")
    ->Arg(1)
    ->Arg(1000)
    ->Arg(1'000'000)
    ->Iterations(iterations);

} // namespace
