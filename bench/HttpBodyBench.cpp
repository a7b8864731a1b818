#include "net/CZoHTTPComunicator.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>

// Reading a body: the time per byte is the same at any length, and the memory on top of what the
// scripted internet holds stays within twice the body, whatever length the server declares.
namespace {

std::atomic<std::size_t> held{0};
std::atomic<std::size_t> peak{0};

using Clock = std::chrono::steady_clock;

struct Reading
{
    Clock::time_point begin;
    Clock::time_point end;
    std::size_t heldAtBegin = 0;
};

// The client reports 0 when it has the head of the answer and 100 when it has read the body.
void NoteProgress(double progress, void* context)
{
    auto& reading = *static_cast<Reading*>(context);
    if (progress == 0.0)
    {
        reading.heldAtBegin = held;
        peak = held.load();
        reading.begin = Clock::now();
    }
    else if (progress == 100.0)
        reading.end = Clock::now();
}

void ReadBody(benchmark::State& state)
{
    simulated::Reset();
    const auto length = static_cast<std::size_t>(state.range(0)) << 20;
    platform::CStopSignal stop;
    net::CZoHTTPComunicator client(stop);
    Reading reading;
    client.SetProgress(&NoteProgress, &reading, nullptr);
    double peakRatio = 0;
    for (auto _ : state)
    {
        simulated::Answer answer;
        answer.body.assign(length, 'b');
        answer.contentLength = static_cast<std::uint32_t>(state.range(1));
        simulated::AddAnswer(std::move(answer));
        if (client.GetContent(L"https://h/", 0).size() != length)
            state.SkipWithError("the body is not whole");
        state.SetIterationTime(std::chrono::duration<double>(reading.end - reading.begin).count());
        peakRatio = static_cast<double>(peak - reading.heldAtBegin) / static_cast<double>(length);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(length) * state.iterations());
    state.counters["memory/body"] = peakRatio;
}

// Megabytes, declared length: none, or one that lies.
BENCHMARK(ReadBody)
    ->ArgNames({"MB", "declared"})
    ->ArgsProduct({{5, 10, 25, 50}, {0}})
    ->Args({50, 0xFFFFFFFF})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    const std::size_t now = held += ::malloc_usable_size(memory);
    for (std::size_t seen = peak; seen < now && !peak.compare_exchange_weak(seen, now);)
    {}
    return memory;
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr)
        held -= ::malloc_usable_size(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
