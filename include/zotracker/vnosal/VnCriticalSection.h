#pragma once

#include "zotracker/vnosal/Export.h"

#include <cstddef>
#include <cstdint>

// What Clang's thread safety analysis (-Wthread-safety) is told of a lock or of what it guards, in
// its own words; nothing for other compilers.
#ifdef __clang__
#define ZO_LOCKING(attribute) __attribute__((attribute))
#else
#define ZO_LOCKING(attribute)
#endif

namespace VnOSAL {

// A recursive lock for the threads of one process: a thread that holds it may enter it again, and
// leaves it as often as it entered.
//
// Threads: Enter and TryEnter from any thread, Leave from the thread that entered. Nobody may hold
// or want the lock when it goes.
class ZO_LOCKING(capability("lock")) ZO_VNOSAL_API VnCriticalSection
{
public:
    VnCriticalSection() noexcept;
    ~VnCriticalSection();
    VnCriticalSection(const VnCriticalSection&) = delete;
    VnCriticalSection& operator=(const VnCriticalSection&) = delete;

    void Enter() noexcept ZO_LOCKING(acquire_capability());
    // True when the lock is now held.
    bool TryEnter() noexcept ZO_LOCKING(try_acquire_capability(true));
    void Leave() noexcept ZO_LOCKING(release_capability());

private:
    // Room for the system's own object, so that this header needs none of the system's headers.
    alignas(std::max_align_t) std::byte storage[64];
};

enum class EEnter : std::uint8_t
{
    Wait,
    Try
};

// Holds a critical section for its scope; with Try only if it was free.
class ZO_LOCKING(scoped_lockable) ZO_VNOSAL_API VnCriticalSectionLock
{
public:
    explicit VnCriticalSectionLock(VnCriticalSection& entered, EEnter mode = EEnter::Wait) noexcept
        ZO_LOCKING(acquire_capability(entered)) ZO_LOCKING(no_thread_safety_analysis)
        : section(mode == EEnter::Wait || entered.TryEnter() ? &entered : nullptr)
    {
        if (mode == EEnter::Wait)
            entered.Enter();
    }
    ~VnCriticalSectionLock() ZO_LOCKING(release_capability()) { Leave(); }
    VnCriticalSectionLock(const VnCriticalSectionLock&) = delete;
    VnCriticalSectionLock& operator=(const VnCriticalSectionLock&) = delete;

    explicit operator bool() const noexcept { return section != nullptr; } // whether it is held

    // Leaves before the scope ends; a second call does nothing.
    void Leave() noexcept ZO_LOCKING(release_capability()) ZO_LOCKING(no_thread_safety_analysis)
    {
        if (section)
            section->Leave();
        section = nullptr;
    }

private:
    VnCriticalSection* section;
};

} // namespace VnOSAL
