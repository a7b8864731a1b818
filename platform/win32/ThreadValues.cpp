#include "platform/win32/ThreadValues.h"

namespace platform {

// The module brings its own where it brings its runtime's thread functions (RuntimeThreads.cpp).
void FreeThreadValues() noexcept {}

} // namespace platform
