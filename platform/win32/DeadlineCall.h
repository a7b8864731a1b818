#pragma once

#include "platform/StopSignal.h"

#include <chrono>
#include <functional>

namespace platform {

// How long a call may still last once a stop is requested.
inline constexpr std::chrono::milliseconds limitAfterStop{1000};

enum class ECallEnd
{
    Returned,  // all that the call did is visible
    Abandoned, // it goes on by itself
    NotStarted // the module is being unloaded, the system has no thread, or the time was over
};

// Runs `work` on a thread of its own and waits for its end, at most `limit` and at most
// `limitAfterStop` once `stop` is requested.
//
// Past its deadline the call is abandoned, so `work` must own everything it touches. The thread
// holds the module until `work` has returned and is destroyed. What `work` throws ends it and is
// dropped.
//
// For calls into the system that no time-out bounds reliably, or that may need the loader's lock.
// Threads: any.
ECallEnd RunWithinDeadline(std::function<void()> work, std::chrono::milliseconds limit,
                           const CStopSignal& stop);

} // namespace platform
