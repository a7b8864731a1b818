#pragma once

#include "zotracker/vnosal/Export.h"

#include <cstddef>
#include <cstdint>

namespace VnOSAL {

// A recursive lock for the threads of one process: a thread that holds it may enter it again, and
// leaves it as often as it entered.
//
// Threads: Enter and TryEnter from any thread, Leave from the thread that entered. Nobody may hold
// or want the lock when it goes.
class ZO_VNOSAL_API VnCriticalSection
{
public:
    VnCriticalSection() noexcept;
    ~VnCriticalSection();
    VnCriticalSection(const VnCriticalSection&) = delete;
    VnCriticalSection& operator=(const VnCriticalSection&) = delete;

    void Enter() noexcept;
    bool TryEnter() noexcept; // true when the lock is now held
    void Leave() noexcept;

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
class ZO_VNOSAL_API VnCriticalSectionLock
{
public:
    explicit VnCriticalSectionLock(VnCriticalSection& entered, EEnter mode = EEnter::Wait) noexcept
        : section(mode == EEnter::Wait || entered.TryEnter() ? &entered : nullptr)
    {
        if (mode == EEnter::Wait)
            entered.Enter();
    }
    ~VnCriticalSectionLock() { Leave(); }
    VnCriticalSectionLock(const VnCriticalSectionLock&) = delete;
    VnCriticalSectionLock& operator=(const VnCriticalSectionLock&) = delete;

    explicit operator bool() const noexcept { return section != nullptr; } // whether it is held

    // Leaves before the scope ends; a second call does nothing.
    void Leave() noexcept
    {
        if (section)
            section->Leave();
        section = nullptr;
    }

private:
    VnCriticalSection* section;
};

} // namespace VnOSAL
