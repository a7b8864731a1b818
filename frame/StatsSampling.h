#pragma once

#include "frame/TrackingHit.h"

namespace frame {

// Draws whether this run drops its events of the category "STATS": nine runs in ten do. Seeds the
// runtime's generator with the current time. Once per tracker.
bool DrawDropsStatsEvents();

// Whether a draw (0 to 32767) means dropping. Draws fall into ten tenths of that range; those of
// the eighth, 22937 to 26213, send, all others drop. Any thread.
bool IsDroppingDraw(int draw) noexcept;

// Whether the hit is an event of the category "STATS" in any mix of case. Any thread.
bool IsStatsEvent(const TrackingHit& hit);

} // namespace frame
