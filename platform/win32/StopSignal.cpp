#include "platform/StopSignal.h"

#include "platform/SystemException.h"

#include <windows.h>

#include <algorithm>

namespace platform {

CStopSignal::CStopSignal() : event(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (event == nullptr)
        throw CSystemException(HresultFromWin32(::GetLastError()));
}

CStopSignal::~CStopSignal() { ::CloseHandle(event); }

void CStopSignal::Request() noexcept { ::SetEvent(event); }

void CStopSignal::Clear() noexcept { ::ResetEvent(event); }

bool CStopSignal::IsRequested() const noexcept
{
    return ::WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

bool CStopSignal::Wait(std::chrono::milliseconds duration) const noexcept
{
    const auto milliseconds = static_cast<DWORD>(std::max<std::int64_t>(duration.count(), 0));
    return ::WaitForSingleObject(event, milliseconds) == WAIT_OBJECT_0;
}

} // namespace platform
