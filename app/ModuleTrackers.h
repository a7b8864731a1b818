#pragma once

#include "app/TrackerSlot.h"
#include "trackers/classic/CZoTracker.h"
#include "trackers/kpi/CZoTrackerPiWik.h"
#include "trackers/ua/CZoTrackerUA.h"

namespace app {

// The module's state: zero until the application object is constructed.
extern constinit CTrackerSlot<trackers::CZoTracker> classicTracker;
extern constinit CTrackerSlot<trackers::CZoTrackerUA> uaTracker;
extern constinit CTrackerSlot<trackers::CZoTrackerPiWik> kpiTracker;
extern constinit CReferenceCount mainReferences;
extern constinit CReferenceCount kpiReferences;

} // namespace app
