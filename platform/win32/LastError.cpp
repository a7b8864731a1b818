#include "platform/LastError.h"

#include <windows.h>

namespace platform {

std::uint32_t GetLastSystemError() noexcept { return ::GetLastError(); }

void SetLastSystemError(std::uint32_t error) noexcept { ::SetLastError(error); }

} // namespace platform
