#pragma once

#include "platform/StopSignal.h"

#include <cstdint>

namespace platform {

// How long something may go on once a stop is requested; counted from when that is first seen.
//
// Threads: one at a time.
class CStopGrace
{
public:
    // `stopSignal` must outlive this.
    CStopGrace(const CStopSignal& stopSignal, std::uint32_t milliseconds) noexcept
        : stop(stopSignal), length(milliseconds)
    {}

    // Looks for a stop request; true once one has been seen for longer than the grace.
    bool IsOver() noexcept;

private:
    const CStopSignal& stop;
    const std::uint32_t length;
    bool begun = false;
    std::uint32_t beginTick = 0;
};

} // namespace platform
