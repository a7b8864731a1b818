#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

// The clock and the threads of the simulated Windows. Time stands still until a test lets it pass;
// then it jumps from one due wait to the next, and each woken worker runs until it waits again
// before time goes on. So 200 idle seconds cost nothing and end the same way every time.
namespace simulated {

void ResetTime();
void SetUnixTime(std::int64_t seconds);
void SetTickMilliseconds(std::uint32_t ticks);

// Milliseconds of virtual time since the last reset.
std::int64_t GetElapsedMilliseconds();

// Lets time pass on behalf of a test; returns when every worker waits again.
void AdvanceTime(std::chrono::milliseconds duration);

// Returns when every worker waits, without letting time pass.
inline void SettleWorkers() { AdvanceTime(std::chrono::milliseconds(0)); }

// How often a worker's wait has ended.
int GetWakeUpCount();

// Freezes every worker where it waits, for ever, as the end of a process does, and sets the
// module's state accordingly.
void EndProcess();

// How the module's new threads fare; initially they run.
enum class EThreads
{
    Run,
    Held, // do not begin before this changes
    Refused
};
void SetThreads(EThreads fate);

// What the simulated system's own waits stand on. `ready` is asked under the clock's lock. A
// worker's wait ends when it is ready or time has come; a test's wait makes time pass. Returns
// whether it was ready.
bool WaitInVirtualTime(const std::function<bool()>& ready, std::chrono::milliseconds limit);

} // namespace simulated
