#pragma once

#include "frame/TrackingHit.h"

#include <string_view>

// How the host's arguments become hits, without a copy of a text. Pure; any thread.
namespace frame {

HitView MakePageviewHit();
HitView MakeMessageHit(std::wstring_view text);

// Empty category, action or label become "unknown", an empty value "0". An empty page stays so.
HitView MakeEventHit(std::wstring_view category, std::wstring_view action, std::wstring_view label,
                     std::wstring_view value, std::wstring_view page);

// Empty category or action become "unknown", the label stays as it is, and so does a value that is
// empty, "0" or begins with a number other than 0; every other value is dropped.
HitView MakeEventExHit(std::wstring_view category, std::wstring_view action,
                       std::wstring_view label, std::wstring_view value, std::wstring_view page,
                       bool onceOnly);

} // namespace frame
