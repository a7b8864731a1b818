#pragma once

#include <string>

namespace platform {

// Hands one line to whoever listens to the process's debugger output. Any thread; never fails.
void WriteDebugOutput(const std::wstring& line) noexcept;

} // namespace platform
