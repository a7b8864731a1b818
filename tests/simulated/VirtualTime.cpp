#include "tests/simulated/VirtualTime.h"

#include "platform/Clock.h"
#include "platform/ModuleState.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <list>
#include <mutex>
#include <thread>

namespace simulated {

namespace {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

struct Waiter
{
    const std::function<bool()>* ready;
    std::int64_t due;
    bool released = false;
};

struct Time
{
    std::mutex mutex;
    std::condition_variable changed;
    std::list<Waiter*> waiters; // workers that wait
    int running = 0;            // workers that do not
    bool ended = false;         // the process has ended: nobody is released any more
    std::int64_t now = 0;
    std::int64_t unixStart = 1'700'000'000;
    std::uint32_t tickStart = 1'000'000;
};

Time& GetTime()
{
    static Time* const time = new Time; // outlives every thread
    return *time;
}

thread_local bool isWorker = false;

// Lets the waiters go whose condition holds or whose time has come.
void ReleaseWaiters(Time& time)
{
    if (time.ended)
        return;
    time.waiters.remove_if([&](Waiter* waiter) {
        if (waiter->due > time.now && !(*waiter->ready)())
            return false;
        waiter->released = true;
        ++time.running;
        return true;
    });
    time.changed.notify_all();
}

std::int64_t FindNextDue(const Time& time)
{
    std::int64_t next = never;
    for (const Waiter* waiter : time.waiters)
        next = std::min(next, waiter->due);
    return next;
}

// A test's wait: time passes until `ready` holds or `due` has come.
bool DriveUntil(Time& time, std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready,
                std::int64_t due)
{
    for (;;)
    {
        time.changed.wait(lock, [&] { return time.running == 0 || ready(); });
        if (ready())
            return true;
        const std::int64_t next = std::min(due, time.ended ? never : FindNextDue(time));
        if (next == never)
        {
            std::fputs("simulated Windows: everybody waits for ever\n", stderr);
            std::abort();
        }
        time.now = std::max(time.now, next);
        ReleaseWaiters(time);
        if (time.now >= due)
        {
            time.changed.wait(lock, [&] { return time.running == 0 || ready(); });
            return ready();
        }
    }
}

} // namespace

bool WaitInVirtualTime(const std::function<bool()>& ready, std::chrono::milliseconds limit)
{
    Time& time = GetTime();
    std::unique_lock lock(time.mutex);
    if (ready())
        return true;
    const std::int64_t due = limit.count() < 0 ? never : time.now + limit.count();
    if (!isWorker)
        return DriveUntil(time, lock, ready, due);
    Waiter waiter{&ready, due};
    time.waiters.push_back(&waiter);
    --time.running;
    time.changed.notify_all();
    time.changed.wait(lock, [&] { return waiter.released; });
    return ready();
}

void ChangeAndWake(const std::function<void()>& change)
{
    Time& time = GetTime();
    const std::lock_guard lock(time.mutex);
    change();
    ReleaseWaiters(time);
}

void BeginWorker()
{
    ChangeAndWake([] { ++GetTime().running; });
}

void EnterWorker() { isWorker = true; }

void LeaveWorker(const std::function<void()>& lastAct)
{
    ChangeAndWake([&] {
        lastAct();
        --GetTime().running;
    });
}

void ResetTime()
{
    ChangeAndWake([] {
        Time& time = GetTime();
        time.now = 0;
        time.unixStart = 1'700'000'000;
        time.tickStart = 1'000'000;
        if (time.ended) // the frozen workers stay frozen, and out of the count
        {
            time.waiters.clear();
            time.ended = false;
        }
    });
    platform::SetModuleState(platform::EModuleState::Running);
}

void SetUnixTime(std::int64_t seconds)
{
    ChangeAndWake([&] { GetTime().unixStart = seconds - GetTime().now / 1000; });
}

void SetTickMilliseconds(std::uint32_t ticks)
{
    ChangeAndWake([&] { GetTime().tickStart = ticks - static_cast<std::uint32_t>(GetTime().now); });
}

std::int64_t GetElapsedMilliseconds()
{
    Time& time = GetTime();
    const std::lock_guard lock(time.mutex);
    return time.now;
}

void AdvanceTime(std::chrono::milliseconds duration)
{
    WaitInVirtualTime([] { return false; }, std::max(duration, std::chrono::milliseconds(0)));
}

void SettleWorkers() { AdvanceTime(std::chrono::milliseconds(0)); }

void EndProcess()
{
    SettleWorkers();
    ChangeAndWake([] { GetTime().ended = true; });
    platform::SetModuleState(platform::EModuleState::ProcessEnding);
}

} // namespace simulated

namespace platform {

std::int64_t GetUnixTime()
{
    simulated::Time& time = simulated::GetTime();
    const std::lock_guard lock(time.mutex);
    return time.unixStart + time.now / 1000;
}

std::uint32_t GetTickMilliseconds()
{
    simulated::Time& time = simulated::GetTime();
    const std::lock_guard lock(time.mutex);
    return time.tickStart + static_cast<std::uint32_t>(time.now);
}

void Sleep(std::chrono::milliseconds duration)
{
    if (duration.count() <= 0)
        return std::this_thread::yield();
    simulated::WaitInVirtualTime([] { return false; }, duration);
}

} // namespace platform
