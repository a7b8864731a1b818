#include "tests/simulated/VirtualTime.h"

#include "platform/Clock.h"
#include "platform/ModuleState.h"
#include "platform/StopSignal.h"
#include "platform/Thread.h"
#include "tests/simulated/Simulated.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <thread>

#include <immintrin.h>

namespace simulated {

namespace {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr std::chrono::milliseconds unlimited(-1);

struct Waiter
{
    const std::function<bool()>& ready;
    bool released = false;
};

struct Time
{
    Time() { resets.emplace_back(&ResetTime); }
    std::mutex mutex; // of whatever a wait may wait for
    std::condition_variable changed;
    std::multimap<std::int64_t, Waiter*> waiters; // workers that wait, by when they are due
    int running = 0;                              // workers that do not
    std::atomic<int> wakeUps{0};
    std::atomic<EThreads> threads{EThreads::Run};
    std::atomic<std::int64_t> now{0};
    std::atomic<std::int64_t> unixStart{1'700'000'000};
    std::atomic<std::uint32_t> tickStart{1'000'000};
};
Time& timeline = *new Time; // outlives every thread

thread_local bool isWorker = false;

// Lets the waiters go whose condition holds or whose time has come.
void ReleaseWaiters()
{
    const auto released = std::erase_if(timeline.waiters, [](const auto& entry) {
        const auto& [due, waiter] = entry;
        waiter->released = due <= timeline.now || waiter->ready();
        return waiter->released;
    });
    timeline.running += static_cast<int>(released);
    timeline.wakeUps += static_cast<int>(released);
    timeline.changed.notify_all();
}

// Changes something that a wait may be waiting for, and wakes what it waits for.
template <class Change>
void ChangeAndWake(const Change& change)
{
    const std::lock_guard lock(timeline.mutex);
    change();
    ReleaseWaiters();
}

std::atomic<bool>& GetFlag(void* event) noexcept { return *static_cast<std::atomic<bool>*>(event); }

// A test's wait: time passes until `ready` holds or `due` has come.
bool DriveUntil(std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready,
                std::int64_t due)
{
    const auto settle = [&] {
        timeline.changed.wait(lock, [&] { return timeline.running == 0 || ready(); });
        return ready();
    };
    for (bool isOver = false; !settle() && !isOver; isOver = timeline.now >= due)
    {
        const auto first = timeline.waiters.begin();
        const auto next = std::min(due, first == timeline.waiters.end() ? never : first->first);
        if (next == never)
        {
            std::fputs("simulated Windows: everybody waits for ever\n", stderr);
            std::abort();
        }
        timeline.now = std::max(timeline.now.load(), next);
        ReleaseWaiters();
    }
    return ready();
}

} // namespace

bool WaitInVirtualTime(const std::function<bool()>& ready, std::chrono::milliseconds limit)
{
    std::unique_lock lock(timeline.mutex);
    if (ready())
        return true;
    const std::int64_t due = limit == unlimited ? never : timeline.now + limit.count();
    if (!isWorker)
        return DriveUntil(lock, ready, due);
    Waiter waiter{ready};
    timeline.waiters.emplace(due, &waiter);
    --timeline.running;
    timeline.changed.notify_all();
    timeline.changed.wait(lock, [&] { return waiter.released; });
    return ready();
}

void ResetTime()
{
    timeline.now = 0;
    SetUnixTime(1'700'000'000);
    SetTickMilliseconds(1'000'000);
    SetThreads(EThreads::Run);
    platform::SetModuleState(platform::EModuleState::Running);
}

void SetUnixTime(std::int64_t seconds) { timeline.unixStart = seconds - timeline.now / 1000; }
void SetTickMilliseconds(std::uint32_t ticks)
{
    timeline.tickStart = ticks - static_cast<std::uint32_t>(timeline.now);
}

std::int64_t GetElapsedMilliseconds() { return timeline.now; }
int GetWakeUpCount() { return timeline.wakeUps; }

void AdvanceTime(std::chrono::milliseconds duration)
{
    WaitInVirtualTime([] { return false; }, std::max(duration, std::chrono::milliseconds(0)));
}

void EndProcess()
{
    SettleWorkers();
    ChangeAndWake([] { timeline.waiters.clear(); }); // out of the count, and never released
    platform::SetModuleState(platform::EModuleState::ProcessEnding);
}

void SetThreads(EThreads fate)
{
    ChangeAndWake([fate] { timeline.threads = fate; });
}

} // namespace simulated

namespace platform {

using namespace simulated;

std::int64_t GetUnixTime() { return timeline.unixStart + timeline.now / 1000; }
std::uint32_t GetTickMilliseconds()
{
    return timeline.tickStart + static_cast<std::uint32_t>(timeline.now);
}

void Sleep(std::chrono::milliseconds duration)
{
    if (duration.count() <= 0)
        return std::this_thread::yield();
    WaitInVirtualTime([] { return false; }, duration);
}

// --- stop signals ------------------------------------------------------------------------------

CStopSignal::CStopSignal() : event(new std::atomic<bool>(false)) {}
CStopSignal::~CStopSignal() { delete &GetFlag(event); }

void CStopSignal::Request() noexcept
{
    ChangeAndWake([this] { GetFlag(event) = true; });
}

void CStopSignal::Clear() noexcept { GetFlag(event) = false; }
bool CStopSignal::IsRequested() const noexcept { return GetFlag(event); }

bool CStopSignal::Wait(std::chrono::milliseconds duration) const noexcept
{
    return WaitInVirtualTime([this] { return IsRequested(); }, duration);
}

// --- threads -----------------------------------------------------------------------------------

struct CThread::State
{
    std::atomic<bool> resumed{false};
    std::atomic<bool> finished{false};
    std::thread thread;
};

CThread::CThread() noexcept = default;
CThread::~CThread() { Close(); }

bool CThread::CreateSuspended(Routine routine, void* parameter) noexcept
{
    if (state || timeline.threads == EThreads::Refused)
        return false;
    state = std::make_shared<State>();
    ChangeAndWake([] { ++timeline.running; });
    state->thread = std::thread([own = state, routine, parameter] {
        isWorker = true;
        const auto begins = [&own] { return own->resumed && timeline.threads != EThreads::Held; };
        WaitInVirtualTime(begins, unlimited);
        routine(parameter);
        ChangeAndWake([&own] {
            own->finished = true;
            --timeline.running;
        });
    });
    return true;
}

void CThread::Resume() noexcept
{
    ChangeAndWake([this] { state->resumed = true; });
}

bool CThread::IsActive() const noexcept { return state && !state->finished; }

bool CThread::Join() noexcept
{
    if (!state || GetModuleState() == EModuleState::ProcessEnding)
        return true;
    WaitInVirtualTime([this] { return state->finished.load(); }, unlimited);
    if (state->thread.joinable())
        state->thread.join();
    return true;
}

void CThread::Close() noexcept
{
    if (IsActive())
        state->thread.detach(); // frozen with its process
    else if (state && state->thread.joinable())
        state->thread.join();
    state.reset();
}

bool IsProcessShuttingDown() noexcept { return false; }
void NameCurrentThread(const wchar_t*) noexcept {}
void YieldThread() noexcept { std::this_thread::yield(); }

void PauseProcessor(unsigned times) noexcept
{
    for (unsigned i = 0; i < times; ++i)
        _mm_pause();
}

} // namespace platform
