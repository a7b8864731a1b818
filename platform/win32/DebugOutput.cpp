#include "platform/DebugOutput.h"

#include <windows.h>

namespace platform {

void WriteDebugOutput(const std::wstring& line) noexcept
{
    const DWORD lastError = ::GetLastError(); // whoever traces a failure may read it afterwards
    ::OutputDebugStringW(line.c_str());
    ::SetLastError(lastError);
}

} // namespace platform
