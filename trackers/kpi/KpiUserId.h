#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trackers {

// The identifier that KPI requests carry: 32 units, kept in the registry and made anew when it is
// not there in its exact length. Any thread.
std::wstring GetKpiUserId();

// A new identifier of 32 units, mostly digits: the decimal text of the tick count as a signed
// number, behind it that of the time in seconds since 1970, and from twice the length of the first
// text on, over the end of the second one where they meet, the decimal codes of the computer's
// name in a cycle.
std::wstring BuildKpiUserId(std::uint32_t tick, std::int64_t time, std::wstring_view computerName);

} // namespace trackers
