#pragma once

#include "platform/Thread.h"
#include "zotracker/vnosal/VnCriticalSection.h"

namespace frame {

// Holds a section for its scope that is never held longer than some texts take to be copied. It
// tries instead of standing in line: a section that has waiters is handed from one to the next, and
// each hand-over costs a change of threads. Between two tries it pauses, twice as long each time,
// for a try takes the section's memory away from the holder's processor. Only when many tries were
// in vain, because the holder gets no processor, it waits as others do.
class ZO_LOCKING(scoped_lockable) CBriefLock
{
public:
    explicit CBriefLock(VnOSAL::VnCriticalSection& entered) noexcept
        ZO_LOCKING(acquire_capability(entered)) ZO_LOCKING(no_thread_safety_analysis)
        : section(entered)
    {
        for (int i = 0; i < tries; ++i)
        {
            if (section.TryEnter())
                return;
            if (i < pauses)
                platform::PauseProcessor(firstPause << i);
            else
                platform::YieldThread();
        }
        section.Enter();
    }
    ~CBriefLock() ZO_LOCKING(release_capability()) { section.Leave(); }
    CBriefLock(const CBriefLock&) = delete;
    CBriefLock& operator=(const CBriefLock&) = delete;

private:
    static constexpr unsigned firstPause = 8; // about as long as a hit takes to be copied
    static constexpr int pauses = 5;
    static constexpr int tries = 1000;

    VnOSAL::VnCriticalSection& section;
};

} // namespace frame
