#include "zotracker/Exports.h"
#include "app/ModuleTrackers.h"

using namespace app;

namespace {

// The tracker that was chosen at load, while it is alive.
ITracker* FindMainTracker() noexcept
{
    if (ITracker* const tracker = uaTracker.Get())
        return tracker;
    return classicTracker.Get();
}

} // namespace

ITracker* GetTrackerInstance() noexcept
{
    ITracker* const tracker = FindMainTracker();
    if (tracker != nullptr)
        mainReferences.Add();
    return tracker;
}

void DestroyTrackerInstance() noexcept
{
    if (FindMainTracker() == nullptr || !mainReferences.ReleaseLast())
        return;
    classicTracker.Destroy();
    uaTracker.Destroy();
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
