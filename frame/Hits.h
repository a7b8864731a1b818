#pragma once

#include "frame/TrackingHit.h"

#include <string>
#include <string_view>

// How the host's arguments become hits. Pure; any thread.
namespace frame {

TrackingHit MakePageviewHit();
TrackingHit MakeMessageHit(std::wstring_view text);

// Empty category, action or label become "unknown", an empty value "0". An empty page stays so.
TrackingHit MakeEventHit(std::wstring_view category, std::wstring_view action,
                         std::wstring_view label, std::wstring_view value, std::wstring page);

// Empty category or action become "unknown", the label stays as it is, and so does a value that is
// empty, "0" or begins with a number other than 0; every other value is dropped.
TrackingHit MakeEventExHit(std::wstring_view category, std::wstring_view action,
                           std::wstring_view label, std::wstring_view value, std::wstring_view page,
                           bool onceOnly);

} // namespace frame
