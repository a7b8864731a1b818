#pragma once

#include "frame/TrackingHit.h"

#include <cstdint>
#include <string>

namespace trackers {

// What a KPI request says about the client.
struct KpiClient
{
    std::wstring endpoint; // absolute https address, ends in "?" or "&"
    std::wstring siteId;
    std::wstring userAgent;
    std::wstring siteAddress; // the maker's web site
    std::wstring language;    // "de-us", or as configured
    std::wstring phash;       // campaign name
    std::wstring kpiSource;   // campaign keyword
};

// What changes from request to request.
struct KpiMoment
{
    std::wstring userId; // 32 units
    std::uint32_t tick;  // milliseconds, keeps caches from answering
    std::wstring productName;
};

// The address that reports one hit to the tracking interface of a Piwik server: a visit, and for an
// event its e_ parameters. The server counts the use of the product only, so no other hit brings
// parameters of its own. Values go out as they stand unless the body encodes them. Any thread.
std::wstring BuildKpiRequest(const KpiClient& client, const KpiMoment& moment,
                             const frame::TrackingHit& hit);

// An endpoint made ready for the first parameter: "?" behind an address without a query, else "&".
std::wstring OpenQuery(std::wstring endpoint);

// The part of a locale code behind its first "_"; the whole code when it has none.
std::wstring TakeCountryCode(const std::wstring& localeCode);

// "de-us" of the configured language "de_DE" and the country code "US".
std::wstring ComposeLanguage(const std::wstring& configured, const std::wstring& countryCode);

} // namespace trackers
