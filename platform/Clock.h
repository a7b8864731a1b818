#pragma once

#include <chrono>
#include <cstdint>

// Time as the logic sees it. All reading and passing of time goes through here, so that the native
// tests can run on a clock of their own. Any thread.
namespace platform {

// Seconds since 1970-01-01 00:00 UTC.
std::int64_t GetUnixTime();

// Milliseconds since the system started; wraps to 0 after about 49.7 days.
std::uint32_t GetTickMilliseconds();

// Suspends the calling thread; a duration of 0 or less only yields the processor.
void Sleep(std::chrono::milliseconds duration);

} // namespace platform
