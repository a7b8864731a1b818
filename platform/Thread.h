#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace platform {

// One thread of the system, created suspended.
//
// A thread can be joined in every situation a module meets, under the loader's lock too: the end of
// a thread needs that lock, so the routine's return is signalled first, the thread parks itself,
// and the joining side ends it. A thread that has not reached its routine keeps the module in the
// process until it has; one that still has not after a second is ended where it stands. When the
// process is ending, its other threads are gone already and nothing is waited for.
//
// Threads: one owner at a time calls these operations.
class CThread
{
public:
    using Routine = std::uint32_t (*)(void* parameter);

    CThread() noexcept;
    ~CThread(); // closes; does not join
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    // Creates the thread without letting it run. False when the system refuses or one is held.
    bool CreateSuspended(Routine routine, void* parameter) noexcept;
    void Resume() noexcept;

    bool IsHeld() const noexcept; // created and not closed

    // True while the routine has not returned (or has not been entered) and the thread exists.
    bool IsActive() const noexcept;

    // Waits until the routine has returned and ends the thread. False when the thread had to be
    // ended before its routine returned.
    bool Join() noexcept;

    // Ends the thread where it stands. A last resort: what it holds stays held.
    void Terminate(std::uint32_t exitCode) noexcept;

    void Close() noexcept;

private:
    struct State;
    std::unique_ptr<State> state;
};

// Names the calling thread for debuggers; does nothing where the system has no such service.
void NameCurrentThread(const wchar_t* name) noexcept;

// Lets another thread run.
void YieldThread() noexcept;

} // namespace platform
