#pragma once

#include <atomic>
#include <cstdint>

// The seam to the suite's crash-reporting library. Without that library nothing happens here, and
// tracking does not change.
namespace frame {

class CWorkerThread;

// What the library offers to each thread that the module starts; called on that thread.
struct CrashReporting
{
    // Catches what leaves the thread's routine.
    void (*installExceptionHandler)();

    // Catches std::terminate on this thread.
    void (*installTerminateHandler)();

    // Stores the thread object and its progress word in the library's two thread-local slots.
    void (*storeThreadValues)(CWorkerThread& thread, std::atomic<std::uint32_t>& progress);
};

// Does nothing in all of its operations.
extern const CrashReporting noCrashReporting;

} // namespace frame
