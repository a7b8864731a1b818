#pragma once

#include <cstdint>
#include <memory>

namespace platform {

// One thread of the system, created suspended.
//
// A thread can be joined in every situation a module meets, under the loader's lock too, although
// the end of a thread needs that lock:
// - In an ordinary end the thread leaves by itself, holding the module until it has.
// - While the module is being unloaded it cannot leave. It parks itself when its routine has
//   returned, with nothing of anybody's in its hands, and the joining side ends it.
// - A thread that has not reached its routine is given up: it leaves as soon as it begins, without
//   running it, and holds the module until then.
// When the process is ending, its other threads are gone already and nothing is waited for.
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

    // True while the routine has not returned (or has not been entered) and the thread exists.
    bool IsActive() const noexcept;

    // Waits until the routine has returned and the thread is gone, or gives a thread up that has
    // not begun. False when the routine did not return within 20 seconds (1.5 while the module is
    // being unloaded), which would be a fault of the routine's: then the thread has been ended
    // where it stood.
    bool Join() noexcept;

    void Close() noexcept;

private:
    struct State;
    std::shared_ptr<State> state;
};

// Names the calling thread for debuggers; does nothing where the system has no such service.
void NameCurrentThread(const wchar_t* name) noexcept;

// Lets another thread run.
void YieldThread() noexcept;

// Waits some ten processor cycles, so many times.
void PauseProcessor(unsigned times) noexcept;

} // namespace platform
