#include "platform/LastError.h"

namespace platform {

namespace {

thread_local std::uint32_t lastError = 0;

} // namespace

std::uint32_t GetLastSystemError() noexcept { return lastError; }

void SetLastSystemError(std::uint32_t error) noexcept { lastError = error; }

} // namespace platform
