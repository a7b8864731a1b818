#pragma once

#include "platform/StopSignal.h"
#include "platform/win32/UniqueHandle.h"

#include <chrono>

// References to this module. Each keeps it in the process; taking one and giving one back need the
// loader's lock. Giving back the last one unloads the module, which ends its workers: so that is
// done on a thread that ends with it, never by a worker that still works.
namespace platform {

// Looks the loader's functions up. While the module is being loaded; later calls do nothing.
void FindLoaderFunctions() noexcept;

// Takes a reference, waiting for the loader's lock. Null when the loader refuses. Not for workers.
HMODULE TakeModuleReference() noexcept;

// How long a thread that has to come to an end may try for the loader's lock: longer than the lock
// is held while threads begin and end, much shorter than anybody may notice.
inline constexpr std::chrono::milliseconds patienceAtEnd{150};

// Takes a reference as soon as the loader's lock is free, at most for `patience`, and for
// `patienceAtEnd` once `stop` (null: none) is requested. Null when the time is over or the module
// is being unloaded.
//
// Whoever holds the loader's lock may be unloading the module and waiting for this very thread. So
// the lock is tried, never waited for: a thread that waited for it could not be ended either, for
// the lock's next wake-up would go to a thread that is gone.
HMODULE TryTakeModuleReference(std::chrono::milliseconds patience,
                               const CStopSignal* stop) noexcept;

// Gives a reference back on a thread of its own. No handle when the system has none; then the
// reference stays with the caller.
CKernelHandle GiveBackApart(HMODULE reference) noexcept;

} // namespace platform
