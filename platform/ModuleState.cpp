#include "platform/ModuleState.h"

#include <atomic>

namespace platform {

namespace {

constinit std::atomic<EModuleState> moduleState{EModuleState::Running};

} // namespace

EModuleState GetModuleState() noexcept
{
    return IsProcessShuttingDown() ? EModuleState::ProcessEnding : moduleState.load();
}

void SetModuleState(EModuleState next) noexcept { moduleState.store(next); }

} // namespace platform
