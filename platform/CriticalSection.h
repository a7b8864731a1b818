#pragma once

#include <cstddef>

namespace platform {

// A recursive lock for the threads of one process.
//
// Enter, TryEnter and Leave may be called from any thread; Leave only by the thread that entered.
class CCriticalSection
{
public:
    // Throws CSystemException when the system cannot provide a lock.
    CCriticalSection();
    ~CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Enter() noexcept;
    bool TryEnter() noexcept; // true when the lock is now held
    void Leave() noexcept;

private:
    // Room for the system's own object, so that this header needs none of the system's headers.
    alignas(std::max_align_t) std::byte storage[64];
};

// Holds a critical section for its scope.
class CLock
{
public:
    explicit CLock(CCriticalSection& entered) noexcept : section(entered) { section.Enter(); }
    ~CLock() { section.Leave(); }
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

private:
    CCriticalSection& section;
};

// Holds a critical section for its scope if it was free at construction.
class CTryLock
{
public:
    explicit CTryLock(CCriticalSection& tried) noexcept : section(tried), held(tried.TryEnter()) {}
    ~CTryLock()
    {
        if (held)
            section.Leave();
    }
    CTryLock(const CTryLock&) = delete;
    CTryLock& operator=(const CTryLock&) = delete;

    explicit operator bool() const noexcept { return held; }

private:
    CCriticalSection& section;
    const bool held;
};

} // namespace platform
