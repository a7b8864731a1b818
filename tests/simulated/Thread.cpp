#include "platform/Thread.h"

#include "platform/ModuleState.h"
#include "tests/simulated/VirtualTime.h"

#include <atomic>
#include <latch>
#include <thread>

namespace platform {

struct CThread::State
{
    std::latch resumed{1};
    std::atomic<bool> finished{false};
    std::thread thread;
};

CThread::CThread() noexcept = default;

CThread::~CThread() { Close(); }

bool CThread::CreateSuspended(Routine routine, void* parameter) noexcept
{
    if (state)
        return false;
    state = std::make_unique<State>();
    state->thread = std::thread([own = state.get(), routine, parameter] {
        own->resumed.wait();
        simulated::EnterWorker();
        routine(parameter);
        simulated::LeaveWorker([own] { own->finished = true; });
    });
    return true;
}

void CThread::Resume() noexcept
{
    simulated::BeginWorker();
    state->resumed.count_down();
}

bool CThread::IsActive() const noexcept { return state && !state->finished; }

bool CThread::Join() noexcept
{
    if (!state || GetModuleState() == EModuleState::ProcessEnding)
        return true;
    simulated::WaitInVirtualTime([this] { return state->finished.load(); },
                                 std::chrono::milliseconds(-1));
    if (state->thread.joinable())
        state->thread.join();
    return true;
}

void CThread::Close() noexcept
{
    if (!state)
        return;
    if (state->thread.joinable() && state->finished)
        state->thread.join();
    else if (state->thread.joinable())
    {
        state->thread.detach(); // frozen with its process
        new std::shared_ptr<State>(state);
    }
    state.reset();
}

bool IsProcessShuttingDown() noexcept { return false; }

void NameCurrentThread(const wchar_t*) noexcept {}

void YieldThread() noexcept { std::this_thread::yield(); }

} // namespace platform
