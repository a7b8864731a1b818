#include "frame/HitQueue.h"

#include <utility>

namespace frame {

TrackingHit CHitQueue::Take()
{
    PackedHit oldest;
    {
        const CBriefLock lock(queueLock);
        if (hits.IsEmpty())
            return {};
        hits.TakeOldest(oldest);
    }
    return oldest.Unpack();
}

void CHitQueue::Clear()
{
    CPackedHits dropped; // freed without the lock
    const CBriefLock lock(queueLock);
    std::swap(hits, dropped);
}

void CHitQueue::Close()
{
    CPackedHits dropped; // freed without the lock
    const CBriefLock lock(queueLock);
    closed = true;
    std::swap(hits, dropped);
}

} // namespace frame
