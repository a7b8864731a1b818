#include "platform/DebugOutput.h"

#include <windows.h>

namespace platform {

void WriteDebugOutput(const std::wstring& line) noexcept { ::OutputDebugStringW(line.c_str()); }

} // namespace platform
