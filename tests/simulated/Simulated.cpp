#include "tests/simulated/Simulated.h"

#include "tests/simulated/DebugOutput.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/HostPaths.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/NotificationIcon.h"
#include "tests/simulated/ProfileFile.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VersionResource.h"
#include "tests/simulated/VirtualTime.h"

namespace simulated {

void Reset()
{
    ResetDebugOutput();
    ResetFiles();
    ResetHostPaths();
    ResetInternet();
    ResetNotificationIcons();
    ResetProfileFile();
    ResetRegistry();
    ResetSystemFacts();
    ResetTime();
    ResetVersionResource();
}

} // namespace simulated
