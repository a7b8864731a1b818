#pragma once

#include "platform/StopGrace.h"

namespace frame {

// Keeps a worker that empties its queue at the end from holding up its tracker's release: once a
// stop is requested it goes on sending for 10 seconds at the most, and not at all after a failure.
//
// Threads: the worker's only.
class CClosingPhase
{
public:
    explicit CClosingPhase(const platform::CStopSignal& stopSignal) noexcept
        : stop(stopSignal), phase(stopSignal, 10'000)
    {}

    // Whether the next hit may still be sent. Always true while no stop is requested.
    bool MaySend() noexcept { return !phase.IsOver() && !failed; }

    // Tells whether the latest hit could be delivered.
    void NoteDelivery(bool delivered) noexcept;

private:
    const platform::CStopSignal& stop;
    platform::CStopGrace phase;
    bool failed = false;
};

} // namespace frame
