#include "frame/WorkerThread.h"

#include "platform/Clock.h"
#include "platform/ModuleState.h"
#include "platform/SystemException.h"

#include <chrono>

namespace frame {

using namespace std::chrono_literals;
using platform::CSystemException;

const CrashReporting noCrashReporting{[] {}, [] {},
                                      [](CWorkerThread&, std::atomic<std::uint32_t>&) {}};

namespace {

constexpr std::size_t maxNameUnits = 255;
constexpr auto pollInterval = 10ms;
constexpr int lockTries = 2000;
constexpr int endTries = 33;

// Takes the lock within a bounded time; at the end of the process only when it is free.
class ZO_LOCKING(scoped_lockable) CPatientLock
{
public:
    explicit CPatientLock(VnOSAL::VnCriticalSection& tried) ZO_LOCKING(acquire_capability(tried))
        ZO_LOCKING(no_thread_safety_analysis)
        : section(tried)
    {
        for (int i = 0; i < lockTries && !held; ++i)
        {
            if (i > 0 && platform::GetModuleState() == platform::EModuleState::ProcessEnding)
                return;
            if (i > 0)
                platform::Sleep(pollInterval);
            held = section.TryEnter();
        }
    }
    ~CPatientLock() ZO_LOCKING(release_capability()) ZO_LOCKING(no_thread_safety_analysis)
    {
        if (held)
            section.Leave();
    }
    CPatientLock(const CPatientLock&) = delete;
    CPatientLock& operator=(const CPatientLock&) = delete;

    explicit operator bool() const noexcept { return held; }

private:
    VnOSAL::VnCriticalSection& section;
    bool held = false;
};

} // namespace

CWorkerThread::CWorkerThread(Entry entryRoutine, ThreadParam* entryParameter,
                             std::wstring_view threadName, const CrashReporting* crashReporting)
    : entry(entryRoutine),
      parameter(entryParameter),
      name(threadName.substr(0, maxNameUnits)),
      crash(crashReporting)
{
    if (entry == nullptr || crash == nullptr || name.empty())
        throw CSystemException(platform::statusInvalidParameter);
}

std::uint32_t CWorkerThread::Run(void* own) noexcept
{
    auto& self = *static_cast<CWorkerThread*>(own);
    platform::NameCurrentThread(self.name.c_str());
    self.crash->installExceptionHandler();
    self.crash->installTerminateHandler();
    self.crash->storeThreadValues(self, self.progress);
    self.progress = 1;
    const std::uint32_t result = self.entry(self.parameter);
    self.progress = 100;
    self.state = EState::Idle;
    return result;
}

CWorkerThread::EState CWorkerThread::CheckState() const
{
    const EState current = state;
    if (current != EState::Idle && current != EState::Running)
        throw CSystemException(platform::statusAccessViolation);
    return current;
}

void CWorkerThread::CloseEarlierThread()
{
    for (int i = 0; i < endTries && thread.IsActive(); ++i)
        platform::Sleep(pollInterval);
    if (thread.IsActive())
        throw CSystemException(platform::statusInvalidDisposition);
    thread.Join();
    thread.Close();
}

bool CWorkerThread::Start()
{
    const bool started = StartUnderLock();
    platform::YieldThread();
    return started;
}

bool CWorkerThread::StartUnderLock()
{
    const CPatientLock lock(objectLock);
    if (!lock || CheckState() == EState::Running)
        return false;
    CloseEarlierThread();
    if (!thread.CreateSuspended(&Run, this))
        return false;
    progress = 0;
    state = EState::Running;
    thread.Resume();
    return true;
}

bool CWorkerThread::Join()
{
    const CPatientLock lock(objectLock);
    if (!lock)
        return false;
    CheckState();
    const bool returned = thread.Join();
    thread.Close();
    state = EState::Idle;
    if (!returned)
        throw CSystemException(platform::statusInvalidDisposition);
    return true;
}

bool CWorkerThread::IsRunning() const { return CheckState() == EState::Running; }

} // namespace frame
