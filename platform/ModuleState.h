#pragma once

namespace platform {

// What is happening to the module as a whole. Decides whether threads can still be waited for.
enum class EModuleState
{
    Running,
    Unloading,    // the loader's lock is held: no thread can start, end or load anything
    ProcessEnding // every other thread is gone; a lock may be held for ever
};

// Any thread. Set once, by the module's entry point.
EModuleState GetModuleState() noexcept;
void SetModuleState(EModuleState next) noexcept;

} // namespace platform
