#pragma once

#include "platform/WinApp.h"

namespace app {

// The module's application object. Its construction, while the module is being loaded, creates the
// trackers and so starts their workers; its destruction, while the module is being unloaded, ends
// every tracker that its hosts have not released.
//
// Threads: constructed and destroyed under the loader's lock.
class CZoTrackerApp final : public platform::CWinApp
{
public:
    CZoTrackerApp();
    ~CZoTrackerApp() override;

    bool InitInstance() override;
};

} // namespace app
