#pragma once

#include "zotracker/ITracker.h"

// The exports of ZoTracker.dll, undecorated. Any thread; none of them ever throws.
//
// The trackers live from the loading of the module until their last release, at the latest until
// its unloading. Every successful Get adds a reference and wants one Destroy; a Destroy without a
// Get destroys the tracker at once. A destroyed tracker is not created again: later Gets return
// null. Stop using a tracker on every thread before its last release.
//
// The release that destroys a tracker waits for its worker, 3 seconds at the most after its last
// success in sending.
extern "C" {

// The main tracker; null when there is none.
ITracker* GetTrackerInstance() noexcept;
void DestroyTrackerInstance() noexcept;

// The tracker of key performance indicators; null when there is none.
ITracker* GetKPITrackerInstance() noexcept;
void DestroyKPITrackerInstance() noexcept;
}
