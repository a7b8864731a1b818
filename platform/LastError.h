#pragma once

#include <cstdint>

namespace platform {

// The number of the calling thread's latest system error; 0 when there was none since it was last
// set to 0.
std::uint32_t GetLastSystemError() noexcept;
void SetLastSystemError(std::uint32_t error) noexcept;

} // namespace platform
