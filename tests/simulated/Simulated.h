#pragma once

// The simulated Windows that native tests link instead of platform/win32: a small model of what
// the module asks of the system. The headers beside this one hold the controls that tests set it
// up and look at it with; the contract cases of tests/platform hold it to the real system.
//
// Any control may be called from any thread while the logic under test runs.
namespace simulated {

// Puts everything back to the state of a freshly started test: an empty disk and registry, the
// default facts, no failures, no records. Call it before each case.
void Reset();

} // namespace simulated
