#pragma once

#include "frame/ThreadParam.h"

#include <atomic>
#include <cstdint>

namespace app {

// A place for one tracker: filled at most once, while the module is being loaded.
//
// Threads: any. Taking the tracker out and using it elsewhere at the same time is the host's fault.
template <class Tracker>
class CTrackerSlot
{
public:
    Tracker* Get() const noexcept { return tracker; }

    // Constructs the tracker; the slot stays empty when that fails.
    template <class... Arguments>
    void Create(const Arguments&... arguments) noexcept
    {
        try
        {
            tracker = new Tracker(arguments...);
        }
        catch (...)
        {}
    }

    // Of two that destroy at once, one finds nothing.
    void Destroy() noexcept
    {
        const frame::ThreadParam* const deleted = tracker.exchange(nullptr);
        delete deleted;
    }

private:
    std::atomic<Tracker*> tracker{nullptr};
};

// How many results of a factory function are outstanding.
class CReferenceCount
{
public:
    void Reset() noexcept { count = 0; }
    void Add() noexcept { ++count; }

    // Gives one reference back. True when it was the last one, or when there was none.
    bool ReleaseLast() noexcept { return count.fetch_add(-1) < 2; }

private:
    std::atomic<std::int32_t> count{0};
};

} // namespace app
