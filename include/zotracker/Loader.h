#pragma once

#include "zotracker/ITracker.h"
#include "zotracker/zotracker.h"

#include <utility>

namespace zotracker {

enum class ETracker
{
    Main,
    Kpi // key performance indicators
};

using TrackerOptions = ZoTrackerOptions;

// A tracker of ZoTracker.dll for as long as this object lives. Loads the module from the folder of
// the process's executable and from nowhere else, checks its interface, and starts the tracker: it
// is ready for Track... operations. The destructor gives it back and unloads the module; it waits
// for the last hits as the module's releases do.
//
// Without the module, or with one of another interface, every operation does nothing: a host never
// has to ask.
//
// One object for each tracker in a process's life: a tracker that was given back is not made again
// while the module stays loaded. Destroy it before the process ends, outside of DllMain.
//
// Threads: made, moved and destroyed on one thread; the operations as in ITracker.
class CTracker
{
public:
    explicit CTracker(ETracker which = ETracker::Main, TrackerOptions options = {}) noexcept
        : handle(ZoTrackerOpen(which == ETracker::Main ? ZoTrackerMain : ZoTrackerKpi, options))
    {}
    CTracker(CTracker&& other) noexcept : handle(std::exchange(other.handle, {})) {}
    CTracker& operator=(CTracker&& other) noexcept
    {
        std::swap(handle, other.handle);
        return *this;
    }
    ~CTracker() { ZoTrackerClose(&handle); }

    // Whether the module's own tracker takes the calls.
    explicit operator bool() const noexcept { return handle.tracker != nullptr; }

    ITracker* operator->() const noexcept
    {
        static CNoTracker none;
        return *this ? reinterpret_cast<ITracker*>(handle.tracker) : &none;
    }
    ITracker& operator*() const noexcept { return *operator->(); }

private:
    class CNoTracker final : public ITracker
    {
    public:
        std::uint32_t GetInterfaceVersion() noexcept override { return trackerInterfaceVersion; }
        bool IsTrackingEnabled() noexcept override { return false; }
        void SetTrackingEnabled(bool) noexcept override {}
        void TrackPageview() noexcept override {}
        void Initialize(const wchar_t*) noexcept override {}
        void DisableIdlePageviews(bool) noexcept override {}
        void SetContinueSession(bool) noexcept override {}
        void TrackEvent(const wchar_t*, const wchar_t*, const wchar_t*, TrackerText,
                        TrackerText) noexcept override
        {}
        void TrackEventEx(TrackerText, TrackerText, TrackerText, TrackerText, TrackerText,
                          bool) noexcept override
        {}
        void TrackMessage(TrackerText) noexcept override {}
        void TrackPurchase(TrackerText, TrackerText, double, TrackerText,
                           std::int32_t) noexcept override
        {}
        void SetProductName(TrackerText) noexcept override {}
    };

    ZoTrackerHandle handle;
};

} // namespace zotracker
