#pragma once

#include "frame/HitQueue.h"
#include "frame/ThreadParam.h"
#include "frame/WorkerThread.h"
#include "platform/StopSignal.h"
#include "zotracker/ITracker.h"
#include "zotracker/vnosal/VnCriticalSection.h"

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace frame {

// How long an idle worker waits before it looks at its queue again, and between two hits of the
// trackers that report by GET.
inline constexpr std::chrono::milliseconds idlePause{2000};
inline constexpr std::chrono::milliseconds pauseBetweenHits{100};

// What every tracker stands on: the host's calls become hits in a queue, one worker thread takes
// them out. A tracker adds its configuration, its requests and its RunWorker().
//
// A tracker starts its worker at the end of its constructor and stops it at the beginning of its
// destructor, so that the worker never sees half an object.
class CTrackerBase : public ITracker, public ThreadParam
{
public:
    CTrackerBase(const CTrackerBase&) = delete;
    CTrackerBase& operator=(const CTrackerBase&) = delete;

    std::uint32_t GetInterfaceVersion() noexcept final { return trackerInterfaceVersion; }
    bool IsTrackingEnabled() noexcept final { return trackingEnabled; }
    void TrackPageview() noexcept final;
    void TrackEvent(const wchar_t* category, const wchar_t* action, const wchar_t* label,
                    TrackerText value, TrackerText page) noexcept final;
    void TrackEventEx(TrackerText category, TrackerText action, TrackerText label,
                      TrackerText value, TrackerText page, bool onceOnly) noexcept final;
    void TrackMessage(TrackerText text) noexcept final;
    void Initialize(const wchar_t* hostPath) noexcept final;
    void SetProductName(TrackerText name) noexcept final;

    // The name under which hits go out just now. Any thread.
    std::wstring GetProductName() const;

protected:
    // Throws CSystemException when the system has no event left.
    explicit CTrackerBase(std::wstring_view threadName);
    ~CTrackerBase() override = default;

    // Appends a hit. The classic tracker puts others in front of the first one of a run.
    virtual void QueueHit(const HitView& hit) { queue.Append(hit); }

    // The worker's routine: takes hits until a stop is requested. A worker that fails, for want of
    // memory, closes its queue.
    virtual void RunWorker() = 0;

    // What Initialize() asks for, with the path of a host that exists.
    virtual void ReadConfigurationOf(const std::wstring& hostPath) = 0;

    // Takes the name under which hits go out from now on; the configured one for an empty name.
    virtual void ChooseProductName(std::wstring name) = 0;

    // Runs `operation`; whatever fails in it is dropped, so that the host never sees it.
    template <class Operation>
    static void Guard(Operation&& operation) noexcept
    {
        try
        {
            operation();
        }
        catch (...)
        {}
    }

    // Where the system has no thread, the queue is closed.
    void StartWorker();

    // Until a stop finds the queue empty: hands the hits to `process`, in order and until it says
    // false, calls `endRound` and waits. Ends, too, when `endRound` says false.
    template <class Process, class EndRound>
    void DrainInRounds(Process process, EndRound endRound)
    {
        for (;;)
        {
            TrackingHit hit = queue.Take();
            if (hit.type == EHitType::None && stop.IsRequested())
                return;
            while (hit.type != EHitType::None && process(hit))
                hit = queue.Take();
            if (!endRound())
                return;
            stop.Wait(idlePause);
        }
    }

    // Asks the worker to finish and waits for it.
    void StopWorker() noexcept;

    // Switches "install"/"tracking" as SetTrackingEnabled asks, reporting the change as an event.
    // Disabling leaves the flag of this run as it is, so that the event and what follows it still
    // go out; enabling raises it only if `mayEnable`.
    void SwitchInstallTracking(bool enable, bool mayEnable);

    // Queues the event that tells of tracking having been switched.
    void ReportTrackingSwitch(bool enable);

    // "install"/"ProductTrackingName", else "install"/"ProductName", else empty. An empty path is
    // the default configuration file.
    static std::wstring ReadConfiguredProductName(const std::wstring& configPath);

    std::atomic<bool> trackingEnabled{false};
    CHitQueue queue;
    platform::CStopSignal stop;
    mutable VnOSAL::VnCriticalSection productLock;
    std::wstring productName ZO_LOCKING(guarded_by(productLock));

private:
    static std::uint32_t RunTracker(ThreadParam* parameter) noexcept;

    // Queues an event; one without a page gets the product's name as its page.
    void QueueEvent(const HitView& event);

    CWorkerThread worker;
};

} // namespace frame
