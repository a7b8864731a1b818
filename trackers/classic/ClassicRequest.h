#pragma once

#include "frame/TrackingHit.h"

#include <cstdint>
#include <string>

namespace trackers {

// What a classic request says about the client.
struct ClassicClient
{
    std::wstring collectionUrl; // absolute https address, ends in "/__utm.gif?"
    std::wstring trackingId;
    std::wstring domainHash;    // 9 decimal digits
    std::wstring visitorNumber; // 64 to 96 decimal digits
    std::wstring screenWidth;   // pixels
    std::wstring screenHeight;
    std::wstring language; // "de_DE"
    std::wstring phash;    // campaign code, may be empty
    std::wstring productName;
};

// What it says about the visit. Times are decimal seconds since 1970.
struct ClassicVisit
{
    std::wstring firstVisitTime;
    std::wstring previousVisitTime;
    std::wstring currentVisitTime;
    std::wstring sessionCount;
    std::wstring sessionHitNumber;
    std::uint64_t hitNumber = 0; // differs in each request, keeps caches from answering
};

// The address that reports one hit to a classic collection server: the GET of its "/__utm.gif"
// image with the parameters of tracking code version 5.4.3, the visitor's cookies among them
// (https://developers.google.com/analytics/resources/articles/gaTrackingTroubleshooting). An
// event's value must be filled in. Values go out as they stand unless the body encodes them. Any
// thread.
std::wstring BuildClassicRequest(const ClassicClient& client, const ClassicVisit& visit,
                                 const frame::TrackingHit& hit);

} // namespace trackers
