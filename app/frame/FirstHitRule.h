#pragma once

#include "app/frame/HitQueue.h"
#include "app/frame/Hits.h"

#include <string>

namespace app {

// Leads the first hit of a run in: a pageview in front of anything that is none, then the campaign
// code when there is one.
//
// Threads: call under the lock of the queue that it appends to.
class CFirstHitRule
{
public:
    bool IsPending() const noexcept { return pending; }

    // Appends to `queue` what belongs in front of a hit of type `first`, if that is the run's
    // first.
    void Lead(CHitQueue& queue, EHitType first, const std::wstring& phash)
    {
        if (!pending)
            return;
        if (first != EHitType::Pageview)
            queue.Append(MakePageviewHit());
        if (!phash.empty())
            queue.Append(MakePhashHit(phash));
        pending = false;
    }

private:
    bool pending = true;
};

} // namespace app
