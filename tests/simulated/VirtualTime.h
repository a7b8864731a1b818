#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

// The clock of the simulated Windows. It stands still until a test lets time pass; then it jumps
// from one due wait to the next, and each woken worker runs until it waits again before time goes
// on. So 200 idle seconds cost nothing and end the same way every time.
namespace simulated {

void ResetTime();
void SetUnixTime(std::int64_t seconds);
void SetTickMilliseconds(std::uint32_t ticks);

// Milliseconds of virtual time since the last reset.
std::int64_t GetElapsedMilliseconds();

// Lets time pass on behalf of a test; returns when every worker waits again.
void AdvanceTime(std::chrono::milliseconds duration);

// Returns when every worker waits, without letting time pass.
void SettleWorkers();

// Freezes every worker where it waits, for ever, as the end of a process does, and sets the
// module's state accordingly.
void EndProcess();

// What the simulated system's own waits stand on. `ready` is asked under the clock's lock. A
// worker's wait ends when it is ready or time has come; a test's wait makes time pass. Returns
// whether it was ready. A negative `limit` is none.
bool WaitInVirtualTime(const std::function<bool()>& ready, std::chrono::milliseconds limit);

// Changes something that a wait may be waiting for, and wakes what it waits for.
void ChangeAndWake(const std::function<void()>& change);

// A worker's life: counted as running from Begin (called by whoever starts it) to Leave.
void BeginWorker();
void EnterWorker();
void LeaveWorker(const std::function<void()>& lastAct);

} // namespace simulated
