#include "app/ZoTrackerApp.h"

#include "app/ModuleTrackers.h"

namespace app {

constinit CTrackerSlot<trackers::CZoTrackerPiWik> kpiTracker;
constinit CReferenceCount mainReferences;
constinit CReferenceCount kpiReferences;

CZoTrackerApp::CZoTrackerApp()
{
    mainReferences.Reset();
    kpiTracker.Create();
}

CZoTrackerApp::~CZoTrackerApp() { kpiTracker.Destroy(); }

bool CZoTrackerApp::InitInstance() { return CWinApp::InitInstance(); }

} // namespace app
