#pragma once

#include <chrono>
#include <cstddef>

namespace platform {

// Tells a worker to finish. Once requested it stays so.
//
// Threads: any. A waiting worker sees the request at once.
class CStopSignal
{
public:
    // Throws CSystemException when the system has no event left.
    CStopSignal();
    ~CStopSignal();
    CStopSignal(const CStopSignal&) = delete;
    CStopSignal& operator=(const CStopSignal&) = delete;

    void Request() noexcept;
    void Clear() noexcept;
    bool IsRequested() const noexcept;

    // Waits for a request, at most `duration`; true when a stop is requested.
    bool Wait(std::chrono::milliseconds duration) const noexcept;

    // The system's own object, for the platform's other waits.
    void* GetNativeHandle() const noexcept { return event; }

private:
    void* event;
};

} // namespace platform
