#include "platform/StopGrace.h"

#include "platform/Clock.h"

namespace platform {

bool CStopGrace::IsOver() noexcept
{
    if (!stop.IsRequested())
        return false;
    const std::uint32_t now = GetTickMilliseconds();
    if (!begun)
        beginTick = now;
    begun = true;
    return now - beginTick >= length;
}

} // namespace platform
