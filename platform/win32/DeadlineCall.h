#pragma once

#include "platform/StopSignal.h"

#include <chrono>
#include <functional>

namespace platform {

// How long a call may still last once a stop is requested.
inline constexpr std::chrono::milliseconds limitAfterStop{1000};

// Runs `work` on a thread of the process's pool and waits for its end, at most `limit` and at most
// `limitAfterStop` once `stop` is requested. True when it has ended; then all it did is visible.
//
// Past its deadline the call is abandoned: it goes on by itself, so `work` must own everything it
// touches. The module stays mapped until it has returned. While the module is being unloaded
// nothing can be started any more, and `work` is dropped unrun.
//
// For calls into the system that no time-out bounds reliably. Threads: any; `work` must not throw.
bool RunWithinDeadline(std::function<void()> work, std::chrono::milliseconds limit,
                       const CStopSignal& stop);

} // namespace platform
