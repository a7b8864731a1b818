#pragma once

namespace platform {

// Holds the loader's lock for its scope if it can be had at once. While it is held, nobody can
// begin to unload this module, so what would otherwise block for ever against an unloading, such as
// taking a reference to the module, cannot.
//
// A thread must not wait for this lock where the unloading waits for the thread, and one that does
// cannot be ended either: the lock's next wake-up would go to a thread that is gone.
class CLoaderTryLock
{
public:
    CLoaderTryLock() noexcept;
    ~CLoaderTryLock();
    CLoaderTryLock(const CLoaderTryLock&) = delete;
    CLoaderTryLock& operator=(const CLoaderTryLock&) = delete;

    // True when the lock is held, and on a system that has no such lock to offer.
    explicit operator bool() const noexcept { return held; }

private:
    unsigned long long cookie = 0;
    bool held = false;
};

// Looks the system's functions up; call it while the module is being loaded. Later calls do
// nothing.
void PrepareLoaderLock() noexcept;

// A reference to this module, which keeps it in the process; null when the loader refuses. Takes
// the loader's lock.
void* PinModule() noexcept;

// Runs `callback` with `parameter` on a thread of the process's pool and gives the reference
// `pinned` back once it has returned: there, because the last reference ends the workers, and a
// worker cannot end itself. False when the pool has no room; then the module stays pinned.
bool RunPinned(void* pinned, void (*callback)(void* parameter), void* parameter) noexcept;

} // namespace platform
