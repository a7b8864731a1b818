#pragma once

#include "frame/CrashReporting.h"
#include "frame/ThreadParam.h"
#include "platform/Thread.h"
#include "zotracker/vnosal/VnCriticalSection.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace frame {

// The thread object of one tracker: idle, or running one routine.
//
// Start() and Join() take the object's own lock first, trying for about 20 seconds, but once only
// at the end of the process; one that does not get it fails and returns false. A state other than
// the two is a sign of corruption and throws CSystemException (access violation).
//
// Threads: any.
class CWorkerThread
{
public:
    using Entry = std::uint32_t (*)(ThreadParam* parameter);

    // `parameter` must outlive the thread. Of `name` at most 255 units are kept. Throws
    // CSystemException (invalid parameter) without an entry, a name or crash reporting.
    CWorkerThread(Entry entryRoutine, ThreadParam* entryParameter, std::wstring_view threadName,
                  const CrashReporting* crashReporting);
    CWorkerThread(const CWorkerThread&) = delete;
    CWorkerThread& operator=(const CWorkerThread&) = delete;

    // Starts the routine on a new thread. False when it runs already or the system has no thread.
    // Throws CSystemException (invalid disposition) when an earlier thread does not end.
    bool Start();

    // Waits for the routine to return and ends the thread. Throws CSystemException (invalid
    // disposition) when the thread had to be ended before that.
    bool Join();

    bool IsRunning() const;

    // 0 before the routine is called, 1 while it runs, 100 after it has returned.
    std::uint32_t GetProgress() const noexcept { return progress; }

private:
    enum class EState : std::uint32_t
    {
        Idle,
        Running
    };

    static std::uint32_t Run(void* own) noexcept;
    EState CheckState() const;
    bool StartUnderLock();
    void CloseEarlierThread() ZO_LOCKING(requires_capability(objectLock));

    const Entry entry;
    ThreadParam* const parameter;
    const std::wstring name;
    const CrashReporting* const crash;
    VnOSAL::VnCriticalSection objectLock;
    platform::CThread thread ZO_LOCKING(guarded_by(objectLock));
    std::atomic<EState> state{EState::Idle};
    std::atomic<std::uint32_t> progress{0};
};

} // namespace frame
