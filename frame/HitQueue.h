#pragma once

#include "frame/BriefLock.h"
#include "frame/PackedHits.h"

namespace frame {

// Hits waiting to be sent, oldest first.
//
// Kept in memory only. What becomes of the hits that are queued when the tracker goes is the
// tracker's to say: the classic one drops them, the others send them while sends succeed.
//
// Threads: any thread may call any operation. Append() holds the lock while it copies the texts and
// never waits for the network, so the host may call it from its UI thread.
class CHitQueue
{
public:
    // Appends a copy of the hit behind all others. There is no limit on the length. A closed queue
    // drops it.
    void Append(const HitView& hit)
    {
        Append(hit, [](CPackedHits&) {});
    }

    // The same, but first calls `lead` with the hits that are queued: what it appends to them comes
    // in front of `hit`, and no other thread's hit comes between, for both are under one lock.
    template <class Lead>
    void Append(const HitView& hit, Lead&& lead)
    {
        const CBriefLock lock(queueLock);
        if (closed)
            return;
        lead(hits);
        hits.Append(hit);
    }

    // Takes the oldest hit; one of type None when there is none. Costs the same at any length.
    TrackingHit Take();

    // Drops all hits.
    void Clear();

    // Drops all hits, now and in future: there is nobody left to take them.
    void Close();

private:
    VnOSAL::VnCriticalSection queueLock;
    CPackedHits hits ZO_LOCKING(guarded_by(queueLock));
    bool closed ZO_LOCKING(guarded_by(queueLock)) = false;
};

} // namespace frame
