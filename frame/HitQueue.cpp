#include "frame/HitQueue.h"

#include <utility>

namespace frame {

using VnOSAL::VnCriticalSectionLock;

void CHitQueue::Append(TrackingHit&& hit)
{
    const VnCriticalSectionLock lock(queueLock);
    if (!closed)
        hits.push_back(std::move(hit));
}

TrackingHit CHitQueue::Take()
{
    const VnCriticalSectionLock lock(queueLock);
    if (hits.empty())
        return {};
    TrackingHit oldest = std::move(hits.front());
    hits.pop_front();
    return oldest;
}

void CHitQueue::Clear()
{
    std::deque<TrackingHit> dropped; // freed without the lock
    const VnCriticalSectionLock lock(queueLock);
    hits.swap(dropped);
}

void CHitQueue::Close()
{
    const VnCriticalSectionLock lock(queueLock);
    closed = true;
    hits.clear();
}

} // namespace frame
