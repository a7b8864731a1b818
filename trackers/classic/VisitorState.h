#pragma once

#include "trackers/classic/ClassicRequest.h"
#include "trackers/classic/SessionStore.h"

#include <cstdint>
#include <string>

namespace trackers {

// The visitor and the session of one run of the host: since when the visitor is known, how many
// sessions there have been, and how many requests this one has had.
//
// Threads: the worker's only.
class CVisitorState
{
public:
    // Begins a session, the visitor's first or a further one, or continues the stored one. Done
    // once per run, before the first request; does nothing from then on.
    void LoadVisitorState(const CSessionStore& store, bool continueSession);

    // Counts one request: in the session, and in the run, whose numbers begin behind `startTick`.
    void CountRequest(const CSessionStore& store, std::uint32_t startTick);

    // Puts the store back to before the session that LoadVisitorState() has begun, whose first
    // request could not be delivered. Does nothing when it has begun none.
    void RollBackSessionStart(const CSessionStore& store) const;

    // What requests say about the visit just now.
    const ClassicVisit& GetVisit() const noexcept { return visit; }

private:
    void BeginFirstSession(const CSessionStore& store);
    void BeginNextSession(const CSessionStore& store);
    void ContinueSession(const CSessionStore& store);
    void StoreSessionStart(const CSessionStore& store);

    ClassicVisit visit;
    std::wstring olderPreviousVisitTime; // the previous visit before this session began
    bool loaded = false;
    bool hasBegun = false; // a session, in this run
    bool hasCounted = false;
};

} // namespace trackers
