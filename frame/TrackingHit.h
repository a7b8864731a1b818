#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

// One hit. The fields by type:
//
//   type             field1          field2       field3         field4         field5
//   Event            value           category     label          action         page title
//   Message                                                                     message text
//   CustomVariable   variable value  slot number  variable name  scope
//   Transaction, Item: as the tracker's TrackPurchase fills them; Pageview: all empty
template <class Text>
struct BasicHit
{
    EHitType type = EHitType::None;
    Text field1 = {};
    Text field2 = {};
    Text field3 = {};
    Text field4 = {};
    Text field5 = {};
    bool onceOnly = false; // an event that is sent only the first time it occurs

    bool operator==(const BasicHit&) const = default;
};

// A hit that owns its texts.
using TrackingHit = BasicHit<std::wstring>;

// A hit on its way into a queue: its texts are somebody else's.
using HitView = BasicHit<std::wstring_view>;

inline HitView ViewHit(const TrackingHit& hit) noexcept
{
    return {hit.type, hit.field1, hit.field2, hit.field3, hit.field4, hit.field5, hit.onceOnly};
}

} // namespace frame
