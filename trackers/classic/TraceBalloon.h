#pragma once

#include "frame/TrackingHit.h"
#include "platform/NotificationIcon.h"

#include <string>

namespace trackers {

// One hit as a tester sees it.
struct HitDescription
{
    std::wstring title; // empty: the hit is not shown
    std::wstring text;
};

// "GA: Event" and "Category: Action - Label (Value)", and so on. Any thread.
HitDescription DescribeHit(const frame::TrackingHit& hit, const std::wstring& productName);

// Shows a tester every hit on its way out, in a balloon over the notification area and as a line
// of the trace.
//
// Threads: the worker's only.
class CTraceBalloon
{
public:
    // Shows the icon, which says `tip`. `stop` must outlive this object.
    CTraceBalloon(const std::wstring& tip, const platform::CStopSignal& stop);

    void Show(const HitDescription& hit);

private:
    platform::CNotificationIcon icon;
};

} // namespace trackers
