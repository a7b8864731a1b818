#pragma once

#include "frame/TrackingHit.h"

namespace frame {

// Draws whether this run drops its events of the category "STATS": nine runs in ten do. Seeds the
// runtime's generator with the current time. Once per tracker.
bool DrawDropsStatsEvents();

// Whether a draw (0 to 32767) means dropping: the tenth of the range that it lies in is not the
// eighth. Any thread.
bool IsDroppingDraw(int draw) noexcept;

// Whether the hit is an event of the category "STATS" in any mix of case. Any thread.
bool IsStatsEvent(const TrackingHit& hit);

} // namespace frame
