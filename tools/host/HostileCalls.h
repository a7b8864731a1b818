#pragma once

#include "zotracker/ITracker.h"

namespace host {

// Calls every operation with everything that a careless host may hand over: null, empty, a
// megabyte, lone surrogates, embedded zeros and controls, markup, no number, infinities, negative
// quantities.
void CallWithEverythingOdd(ITracker& tracker);

} // namespace host
