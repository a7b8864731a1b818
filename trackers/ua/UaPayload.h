#pragma once

#include "frame/TrackingHit.h"
#include "platform/SystemFacts.h"

#include <cstdint>
#include <string>
#include <string_view>

// The texts of the measurement protocol: parameters joined by "&", one text per hit
// (https://developers.google.com/analytics/devguides/collection/protocol/v1/parameters). Pure; any
// thread.
namespace trackers {

// What a payload says about the client.
struct UaClient
{
    std::wstring protocolVersion;
    std::wstring trackingId;
    std::wstring hostPath; // its file name is the data source
    std::wstring clientId; // 32 hexadecimal digits
    std::wstring productUserId;
    std::wstring phash; // campaign source
    std::wstring language;
    std::wstring productName;
    platform::ScreenSize screen;
};

// The part that all hits of a run have in common. Values that are not encoded in the body go out as
// they stand; a missing one leaves its parameter empty.
std::wstring BuildCommonPayload(const UaClient& client);

// The whole payload of one hit: `commonPayload` and what the hit brings. Empty for a type that the
// protocol has no form for.
std::wstring BuildHitPayload(std::wstring_view commonPayload, std::wstring_view productName,
                             const frame::TrackingHit& hit);

// Marks a finished payload as the first one of a session.
void AppendSessionStart(std::wstring& payload);

// The two hits of a purchase: the transaction, with `affiliation` and the price of all pieces, and
// its item.
struct UaPurchase
{
    frame::TrackingHit transaction;
    frame::TrackingHit item;
};
UaPurchase MakePurchaseHits(std::wstring_view itemCode, double unitPrice, std::wstring_view orderId,
                            std::int32_t quantity, std::wstring_view affiliation);

// What an order without an id of its own is called: "client_tick".
std::wstring MakeOrderId(std::wstring_view clientId, std::uint32_t tick);

} // namespace trackers
