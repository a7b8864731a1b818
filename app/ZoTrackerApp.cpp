#include "app/ZoTrackerApp.h"

#include "app/ModuleTrackers.h"
#include "env/InstallConfig.h"

namespace app {

constinit CTrackerSlot<trackers::CZoTracker> classicTracker;
constinit CTrackerSlot<trackers::CZoTrackerPiWik> kpiTracker;
constinit CReferenceCount mainReferences;
constinit CReferenceCount kpiReferences;

CZoTrackerApp::CZoTrackerApp()
{
    const std::wstring none;
    mainReferences.Reset();
    if (env::GetInstallConfigInt(L"UA", L"Enabled", -1) == -1)
        classicTracker.Create(none, none, none);
    kpiTracker.Create();
}

CZoTrackerApp::~CZoTrackerApp()
{
    classicTracker.Destroy();
    kpiTracker.Destroy();
}

bool CZoTrackerApp::InitInstance() { return CWinApp::InitInstance(); }

} // namespace app
