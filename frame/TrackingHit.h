#pragma once

#include <cstdint>
#include <string>

namespace frame {

enum class EHitType : std::int32_t
{
    None = 0, // what an empty queue yields
    Pageview = 1,
    Event = 2,
    Message = 3,
    Transaction = 4,
    Item = 5,
    CustomVariable = 6
};

// One queued hit. The fields by type:
//
//   type             field1          field2       field3         field4         field5
//   Event            value           category     label          action         page title
//   Message                                                                     message text
//   CustomVariable   variable value  slot number  variable name  scope
//   Transaction, Item: as the tracker's TrackPurchase fills them; Pageview: all empty
struct TrackingHit
{
    EHitType type = EHitType::None;
    std::wstring field1;
    std::wstring field2;
    std::wstring field3;
    std::wstring field4;
    std::wstring field5;
    bool onceOnly = false; // an event that is sent only the first time it occurs
};

} // namespace frame
