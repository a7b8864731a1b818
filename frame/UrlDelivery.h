#pragma once

#include "frame/ClosingPhase.h"
#include "platform/Internet.h"

#include <memory>
#include <string>

// Delivery of a hit as the GET of one address: what the classic and the KPI tracker share.
namespace frame {

// Opens the internet session of one worker run; null when the system has none.
std::unique_ptr<platform::CInternetSession> OpenDeliverySession(const std::wstring& agent,
                                                                const platform::CStopSignal& stop);

// One attempt: GETs `url` over a secure connection with the header block `headers`, at most 5000 ms
// for connecting. True exactly when an answer came, whatever its status; it is discarded unread.
// `session` may be null.
bool OpenTrackingUrl(platform::CInternetSession* session, const std::wstring& url,
                     const std::wstring& headers);

// Calls `attempt` and, when that fails, after 500 ms once more; a stop request skips the pause.
// After a stop `closing` may forbid either attempt, and one that took long is not repeated, so that
// both together end within 3 seconds. True when one was delivered.
template <class Attempt>
bool DeliverWithRetry(Attempt&& attempt, CClosingPhase& closing, const platform::CStopSignal& stop)
{
    platform::CStopGrace repeating(stop, 1'500);
    const auto tryOnce = [&] { return !repeating.IsOver() && closing.MaySend() && attempt(); };
    bool delivered = tryOnce();
    if (!delivered)
    {
        stop.Wait(std::chrono::milliseconds(500));
        delivered = tryOnce();
    }
    closing.NoteDelivery(delivered);
    return delivered;
}

} // namespace frame
