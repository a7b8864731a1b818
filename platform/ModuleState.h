#pragma once

namespace platform {

// What is happening to the module as a whole. Decides whether threads can still be waited for.
enum class EModuleState
{
    Running,
    Unloading,    // the loader's lock is held: no thread can start, end or load anything
    ProcessEnding // every other thread is gone; a lock may be held for ever
};

// Any thread. Another module may call this one while the process ends, before this one's entry
// point is told; that counts as ProcessEnding, too.
EModuleState GetModuleState() noexcept;

// Once, by the module's entry point.
void SetModuleState(EModuleState next) noexcept;

// Whether the system has begun to end the process, other threads first.
bool IsProcessShuttingDown() noexcept;

} // namespace platform
