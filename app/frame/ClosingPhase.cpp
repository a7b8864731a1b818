#include "app/frame/ClosingPhase.h"

#include "platform/Clock.h"

namespace app {

namespace {

constexpr std::uint32_t longestPhase = 10'000; // milliseconds

} // namespace

bool CClosingPhase::MaySend() noexcept
{
    if (!stop.IsRequested())
        return true;
    const std::uint32_t now = platform::GetTickMilliseconds();
    if (!begun)
        beginTick = now;
    begun = true;
    return !failed && now - beginTick < longestPhase;
}

void CClosingPhase::NoteAttempt(bool delivered) noexcept
{
    if (!delivered && stop.IsRequested())
        failed = true;
}

} // namespace app
