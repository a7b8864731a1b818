#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trackers {

// The identifier that KPI requests carry: 32 units, kept in the registry and made anew when it is
// not there in its exact length. Any thread.
std::wstring GetKpiUserId();

// A new identifier of 32 units, mostly digits. For the tick count 12345, the time 1500000000 and
// the computer "AB":
//
//   12345 15000 6566656665666566656665      (without the spaces)
//
// the tick count as a signed number; as many units of the time in seconds since 1970, with
// zeros behind it if it has fewer; then the decimal codes of the name's units, 65 and 66, again and
// again.
std::wstring BuildKpiUserId(std::uint32_t tick, std::int64_t time, std::wstring_view computerName);

} // namespace trackers
