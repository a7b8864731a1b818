#include "app/ZoTrackerApp.h"

#include "app/ModuleTrackers.h"
#include "env/InstallConfig.h"
#include "env/ProcessCache.h"

namespace app {

constinit CTrackerSlot<trackers::CZoTracker> classicTracker;
constinit CTrackerSlot<trackers::CZoTrackerUA> uaTracker;
constinit CTrackerSlot<trackers::CZoTrackerPiWik> kpiTracker;
constinit CReferenceCount mainReferences;
constinit CReferenceCount kpiReferences;

namespace {

// The presence of the key counts, not its value: 0 chooses the measurement protocol, too.
bool IsMeasurementProtocolChosen() noexcept
try
{
    constexpr std::int32_t missing = -1;
    return env::GetInstallConfigInt(L"UA", L"Enabled", missing) != missing;
}
catch (...)
{
    return false;
}

} // namespace

CZoTrackerApp::CZoTrackerApp()
{
    const std::wstring none;
    mainReferences.Reset();
    if (IsMeasurementProtocolChosen())
        uaTracker.Create(none, none, none);
    else
        classicTracker.Create(none, none, none);
    kpiTracker.Create();
}

CZoTrackerApp::~CZoTrackerApp()
{
    classicTracker.Destroy();
    uaTracker.Destroy();
    kpiTracker.Destroy();
    env::ResetProcessCache();
}

bool CZoTrackerApp::InitInstance() { return CWinApp::InitInstance(); }

} // namespace app
