#include "app/ModuleTrackers.h"
#include "zotracker/ZoTracker.h"

using namespace app;

ITracker* GetTrackerInstance() noexcept { return nullptr; }

void DestroyTrackerInstance() noexcept {}

ITracker* GetKPITrackerInstance() noexcept
{
    ITracker* const tracker = kpiTracker.Get();
    if (tracker != nullptr)
        kpiReferences.Add();
    return tracker;
}

void DestroyKPITrackerInstance() noexcept
{
    if (kpiTracker.Get() == nullptr || !kpiReferences.ReleaseLast())
        return;
    kpiTracker.Destroy();
    kpiReferences.Reset();
}
