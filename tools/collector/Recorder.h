#pragma once

#include "tools/collector/HitStore.h"
#include "tools/collector/Inspector.h"

#include <functional>
#include <mutex>

namespace collector {

// Decodes, checks and stores hits, one after the other, and then shows them. Any thread.
class CRecorder
{
public:
    // `show` is called with each hit once it is stored, one at a time.
    CRecorder(CHitStore& to, std::function<void(const HitReport&)> shown)
        : store(to), show(std::move(shown))
    {}

    // Takes up visitors and sessions where the store's latest hits left them.
    void Resume()
    {
        constexpr std::size_t most = 10'000;
        const std::uint64_t last = store.GetState().lastId;
        HitFilter filter;
        filter.after = last > most ? last - most : 0;
        filter.limit = most;
        const std::lock_guard guard(lock);
        for (HitReport& report : store.Find(filter, EDetail::Whole))
            inspector.Inspect(std::move(report.request));
    }

    void Add(const Hit& hit)
    {
        const std::lock_guard guard(lock);
        HitReport report = inspector.Inspect(hit);
        store.Add(report);
        show(report);
    }

    // Forgets all hits and what was known of their visitors; how many there were.
    std::size_t Clear()
    {
        const std::lock_guard guard(lock);
        inspector.Clear();
        return store.Clear();
    }

private:
    CHitStore& store;
    std::function<void(const HitReport&)> show;
    std::mutex lock; // guards the inspector; taken before the store's
    CInspector inspector;
};

} // namespace collector
