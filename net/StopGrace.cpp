#include "net/StopGrace.h"

#include "platform/Clock.h"

namespace net {

bool CStopGrace::IsOver() noexcept
{
    if (!stop.IsRequested())
        return false;
    const std::uint32_t now = platform::GetTickMilliseconds();
    if (!begun)
        beginTick = now;
    begun = true;
    return now - beginTick >= length;
}

} // namespace net
