#include "trackers/classic/FirstHitRule.h"

namespace trackers {

using frame::EHitType;
using frame::HitView;

HitView MakePhashHit(std::wstring_view phash)
{
    HitView hit;
    hit.type = EHitType::CustomVariable;
    hit.field1 = phash;
    hit.field2 = L"1";
    hit.field3 = L"PHASH";
    hit.field4 = L"2";
    return hit;
}

} // namespace trackers
