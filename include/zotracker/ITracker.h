#pragma once

#include "zotracker/TrackerText.h"
#include "zotracker/Version.h"

#include <cstdint>

// What GetInterfaceVersion returns for the interface below.
inline constexpr std::uint32_t trackerInterfaceVersion = ZOTRACKER_INTERFACE_VERSION;

// Reports anonymous usage of one host application. Obtained from GetTrackerInstance or
// GetKPITrackerInstance and handed back through the matching release function; never deleted.
//
// Every operation returns at once and none ever fails: what the host reports is put in a queue and
// sent by a thread of the module. Empty text means "not given". No exception leaves an operation;
// one that runs out of memory drops its hit.
//
// Threads: the Track... operations, SetProductName, IsTrackingEnabled and GetInterfaceVersion may
// be called from any thread at any time; the others from one thread.
//
// The order of the operations is binary-stable. Call them in this order: the options, Initialize
// once, then any number of Track... operations.
class ITracker
{
public:
    // Always trackerInterfaceVersion; a host compares it with the header it was built with.
    virtual std::uint32_t GetInterfaceVersion() noexcept = 0;

    // Whether the user has allowed tracking.
    virtual bool IsTrackingEnabled() noexcept = 0;

    // Switches tracking on or off for good and reports the change as an event. Nothing happens when
    // the configuration already says so.
    virtual void SetTrackingEnabled(bool enable) noexcept = 0;

    // The user opened a page of the product.
    virtual void TrackPageview() noexcept = 0;

    // Reads the configuration beside `hostPath`, the full path of the host's own executable or of
    // another file in the installation folder. Nothing happens when there is no such file.
    virtual void Initialize(const wchar_t* hostPath) noexcept = 0;

    // True: no pageview is sent to keep an idle session alive.
    virtual void DisableIdlePageviews(bool disable) noexcept = 0;

    // True: the stored session is continued instead of a new one begun. Takes effect when given
    // before the first hit.
    virtual void SetContinueSession(bool continueSession) noexcept = 0;

    // The user used a feature. `category`, `action` and `label` may be null: "unknown" takes their
    // place when they are null or empty, "0" the place of an empty `value`, the product name that
    // of an empty `page`.
    virtual void TrackEvent(const wchar_t* category, const wchar_t* action, const wchar_t* label,
                            TrackerText value, TrackerText page) noexcept = 0;

    // As TrackEvent, but an empty `label` stays empty, an empty `value` too, and a `value` is
    // dropped unless it is "0" or begins with a whole number other than 0: "0.5" and "00" are
    // dropped. `onceOnly`: sent only the first time this event occurs on this computer.
    virtual void TrackEventEx(TrackerText category, TrackerText action, TrackerText label,
                              TrackerText value, TrackerText page, bool onceOnly) noexcept = 0;

    // The user saw a message.
    virtual void TrackMessage(TrackerText text) noexcept = 0;

    // The user bought `quantity` pieces at `unitPrice` each. An empty `orderId` is replaced by one
    // that the tracker makes.
    virtual void TrackPurchase(TrackerText itemName, TrackerText itemCode, double unitPrice,
                               TrackerText orderId, std::int32_t quantity) noexcept = 0;

    // The name under which the product reports, and the page title of events that give none. Empty:
    // the configured name.
    virtual void SetProductName(TrackerText name) noexcept = 0;

protected:
    ~ITracker() = default; // trackers are released through the module's exports
};
