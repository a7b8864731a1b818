#include "tests/simulated/Thread.h"

#include "platform/ModuleState.h"
#include "platform/Thread.h"
#include "tests/simulated/State.h"
#include "tests/simulated/VirtualTime.h"

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

namespace simulated {

namespace {

struct CFate final : CResettable
{
    std::atomic<EThreads> threads{EThreads::Run};
    void Reset() override { SetThreads(EThreads::Run); }
};

CFate fate;

} // namespace

void SetThreads(EThreads wanted)
{
    fate.threads = wanted;
    fate.threads.notify_all();
}

} // namespace simulated

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
    if (state || simulated::fate.threads == simulated::EThreads::Refused)
        return false;
    state = std::make_unique<State>();
    state->thread = std::thread([own = state.get(), routine, parameter] {
        own->resumed.wait();
        simulated::fate.threads.wait(simulated::EThreads::Held);
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
        static auto& frozen = *new std::vector<std::shared_ptr<State>>;
        frozen.push_back(state);
    }
    state.reset();
}

bool IsProcessShuttingDown() noexcept { return false; }

void NameCurrentThread(const wchar_t*) noexcept {}

void YieldThread() noexcept { std::this_thread::yield(); }

} // namespace platform
