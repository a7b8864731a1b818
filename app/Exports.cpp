#include "app/ModuleTrackers.h"
#include "zotracker/ZoTracker.h"

using namespace app;

ITracker* GetTrackerInstance() noexcept
{
    ITracker* const tracker = classicTracker.Get();
    if (tracker != nullptr)
        mainReferences.Add();
    return tracker;
}

void DestroyTrackerInstance() noexcept
{
    if (classicTracker.Get() == nullptr || !mainReferences.ReleaseLast())
        return;
    classicTracker.Destroy();
    mainReferences.Reset();
}

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
