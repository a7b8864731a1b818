#pragma once

// Stands between ZoTracker.dll and the system, from before the module's first instruction on, and
// sees two kinds of faults that no result shows:
//
// - A worker calls what may need the loader's lock, a window or a lock of a system library's.
//   (Workers are the module's threads that it creates suspended; its other threads make such calls
//   for them.)
// - Anybody calls, under the loader's lock, what waits for other threads or leaves the machine; or
//   a thread is ended from outside although nobody unloads the module.
//
// Each is printed once a function, as "violation: FUNCTION on a worker". It also counts how often
// workers wake up, and lets the module's allocations fail.
namespace host {

// Watches every later load of the module. Once, before the first one.
void WatchImports() noexcept;

// Lets the module's allocation number `first`, counted from now on, and `count` - 1 after it fail.
void StarveAllocations(long first, long count) noexcept;

// How many allocations have failed since StarveAllocations was called.
long GetStarvedCount() noexcept;

// How many violations were seen, each function once.
long GetViolationCount() noexcept;

// How often workers have woken up so far, from a wait or a sleep.
long GetWakeUpCount() noexcept;

} // namespace host
