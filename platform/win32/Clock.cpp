#include "platform/Clock.h"

#include <windows.h>

#include <algorithm>
#include <ctime>

namespace platform {

std::int64_t GetUnixTime() { return static_cast<std::int64_t>(std::time(nullptr)); }

std::uint32_t GetTickMilliseconds() { return ::GetTickCount(); }

void Sleep(std::chrono::milliseconds duration)
{
    ::Sleep(static_cast<DWORD>(std::max<std::int64_t>(duration.count(), 0)));
}

} // namespace platform
