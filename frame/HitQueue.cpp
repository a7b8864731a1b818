#include "frame/HitQueue.h"

#include <utility>

namespace frame {

using VnOSAL::VnCriticalSectionLock;

TrackingHit CHitQueue::Take()
{
    PackedHit oldest;
    {
        const VnCriticalSectionLock lock(queueLock);
        if (hits.IsEmpty())
            return {};
        oldest = hits.TakeOldest();
    }
    return oldest.Unpack();
}

void CHitQueue::Clear()
{
    CPackedHits dropped; // freed without the lock
    const VnCriticalSectionLock lock(queueLock);
    std::swap(hits, dropped);
}

void CHitQueue::Close()
{
    CPackedHits dropped; // freed without the lock
    const VnCriticalSectionLock lock(queueLock);
    closed = true;
    std::swap(hits, dropped);
}

} // namespace frame
