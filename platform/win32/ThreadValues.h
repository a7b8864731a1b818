#pragma once

namespace platform {

// Frees what the compiler's runtime keeps for the calling thread, which is about to be ended
// without passing through the loader. Nothing may be thrown afterwards.
void FreeThreadValues() noexcept;

} // namespace platform
