#include "app/frame/HitQueue.h"

#include <utility>

namespace app {

void CHitQueue::Append(TrackingHit&& hit)
{
    const platform::CLock lock(queueLock);
    if (!closed)
        hits.push_back(std::move(hit));
}

TrackingHit CHitQueue::Take()
{
    const platform::CLock lock(queueLock);
    if (hits.empty())
        return {};
    TrackingHit oldest = std::move(hits.front());
    hits.pop_front();
    return oldest;
}

void CHitQueue::Clear()
{
    std::deque<TrackingHit> dropped; // freed without the lock
    const platform::CLock lock(queueLock);
    hits.swap(dropped);
}

void CHitQueue::Close()
{
    const platform::CLock lock(queueLock);
    closed = true;
    hits.clear();
}

} // namespace app
