#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <functional>

// What can be seen of this process from inside, and what other parts of a host do meanwhile.
namespace host {

// The bytes in use on all heaps of the process.
std::size_t MeasureHeaps();

DWORD CountHandles();
DWORD CountThreads();

// Runs `work` on a thread of its own that holds the loader's lock, and returns when `work` is done;
// the thread keeps the lock for `milliseconds` more.
void RunUnderLoaderLock(const std::function<void()>& work, DWORD milliseconds);

// Whether that lock of such a thread was held within the last half second.
bool HasHeldLoaderLock() noexcept;

// Ends the process after so long, as from outside, and goes on.
void EndProcessAfter(DWORD milliseconds);

// Runs `work` on `count` fresh threads at once and waits for them.
void RunOnThreads(int count, const std::function<void()>& work);

// A thread that asks the loader and the heap again and again, as any part of a host may, and keeps
// how long the longest question took. For as long as the process lives.
class CBystander
{
public:
    void Start();

    // In milliseconds; begins anew.
    ULONGLONG TakeLongestWait() noexcept;

private:
    void Run() noexcept;

    std::atomic<ULONGLONG> longest{0};
    std::atomic<ULONGLONG> begun{0}; // when the present question was asked
};

} // namespace host
