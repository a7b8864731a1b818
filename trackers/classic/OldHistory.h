#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trackers {

// How often one event has occurred on this computer.
struct EventCount
{
    std::wstring fingerprint;
    std::int32_t count; // at least 1
};

// The counts that an earlier version of the product left in an initialisation file:
//
//   [HISTORY]
//   COUNT=2                how many there are
//   FP0=fingerprint        of the first; FP1, ... for the others
//   C0=5                   its count; C1, ... for the others
//
// An entry counts if its number is below COUNT and it has a fingerprint and a count of at least 1.
// Numbers are not looked for beyond what a file of that length can hold when they are used from 0
// on, whatever COUNT says, and a file of more than `limit` bytes holds nothing. Any thread.
std::vector<EventCount> ReadOldHistory(const std::wstring& path, std::uint64_t limit);

} // namespace trackers
