#include "frame/PackedHits.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <type_traits>
#include <utility>

namespace frame {

namespace {

using Head = PackedHit::Head;
static_assert(std::is_trivially_copyable_v<Head>);
static_assert(sizeof(Head) % sizeof(wchar_t) == 0);

constexpr std::size_t headUnits = sizeof(Head) / sizeof(wchar_t);
constexpr std::size_t blockUnits = std::size_t{16} * 1024 / sizeof(wchar_t);

std::uint32_t CountUnits(std::wstring_view text)
{
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::bad_alloc();
    return static_cast<std::uint32_t>(text.size());
}

} // namespace

void CPackedHits::Append(const HitView& hit)
{
    const std::array texts{hit.field1, hit.field2, hit.field3, hit.field4, hit.field5};
    Head head{{}, static_cast<std::uint8_t>(hit.type), hit.onceOnly};
    std::size_t units = headUnits;
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        head.lengths[i] = CountUnits(texts[i]);
        units += texts[i].size();
    }
    wchar_t* to = Extend(units);
    std::memcpy(to, &head, sizeof(head));
    to += headUnits;
    for (std::wstring_view text : texts)
        for (wchar_t unit : text) // short texts: a call of memcpy for each costs twice as much
            *to++ = unit;
}

// Room for so many more units behind the newest record.
wchar_t* CPackedHits::Extend(std::size_t units)
{
    if (newest.size - newest.used < units)
    {
        const std::size_t size = std::max(units, blockUnits);
        Block block{std::make_unique_for_overwrite<wchar_t[]>(size), size};
        if (newest.used > 0)
            full.push_back(std::move(newest));
        newest = std::move(block);
    }
    return newest.units.get() + std::exchange(newest.used, newest.used + units);
}

void CPackedHits::TakeOldest(PackedHit& hit)
{
    const Block& block = full.empty() ? newest : full.front();
    const wchar_t* const from = block.units.get() + taken;
    std::memcpy(&hit.head, from, sizeof(hit.head));
    const std::size_t units =
        std::accumulate(hit.head.lengths.begin(), hit.head.lengths.end(), std::size_t{0});
    hit.longTexts =
        units > hit.texts.size() ? std::make_unique_for_overwrite<wchar_t[]>(units) : nullptr;
    std::copy_n(from + headUnits, units, hit.longTexts ? hit.longTexts.get() : hit.texts.data());
    taken += headUnits + units;
    if (taken == block.used)
        LeaveEmptiedBlock();
}

void CPackedHits::LeaveEmptiedBlock() noexcept
{
    taken = 0;
    if (!full.empty())
        full.pop_front();
    else if (newest.size == blockUnits)
        newest.used = 0;
    else
        newest = {};
}

TrackingHit PackedHit::Unpack() const
{
    TrackingHit hit;
    hit.type = static_cast<EHitType>(head.type);
    hit.onceOnly = head.onceOnly;
    const wchar_t* from = longTexts ? longTexts.get() : texts.data();
    const std::uint32_t* length = head.lengths.data();
    for (std::wstring* field : {&hit.field1, &hit.field2, &hit.field3, &hit.field4, &hit.field5})
    {
        field->assign(from, *length);
        from += *length++;
    }
    return hit;
}

} // namespace frame
