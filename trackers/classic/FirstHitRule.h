#pragma once

#include "frame/Hits.h"
#include "frame/PackedHits.h"

#include <string>
#include <string_view>

namespace trackers {

// The custom variable that tells a campaign code: slot 1, name "PHASH", scope 2 (a session).
frame::HitView MakePhashHit(std::wstring_view phash);

// What goes out before the first hit of a run: a pageview, unless that hit is one itself, and the
// campaign code, when there is one. A run that begins with an event sends: pageview, code, event;
// one that begins with a pageview: code, pageview.
//
// Threads: call under the lock of the queue whose hits it appends to.
class CFirstHitRule
{
public:
    bool IsPending() const noexcept { return pending; }

    // Appends to `hits` what belongs in front of a hit of type `first`, if that is the run's first.
    void Lead(frame::CPackedHits& hits, frame::EHitType first, const std::wstring& phash)
    {
        if (!pending)
            return;
        if (first != frame::EHitType::Pageview)
            hits.Append(frame::MakePageviewHit());
        if (!phash.empty())
            hits.Append(MakePhashHit(phash));
        pending = false;
    }

private:
    bool pending = true;
};

} // namespace trackers
