#pragma once

#include "frame/TrackingHit.h"

#include <cstdint>
#include <string_view>

namespace trackers {

// What the user bought, as the host tells it.
struct Purchase
{
    std::wstring_view itemName;
    std::wstring_view itemCode;
    double unitPrice;
    std::wstring_view orderId; // may be empty
    std::int32_t quantity;
};

// The two hits of a purchase, their parameters ready in `field1`. Amounts have two decimals and a
// decimal point. Only the item's name is encoded. Any thread.

// The whole order: total, no shipping, 19 percent of the total as tax, `phash` as the store.
frame::TrackingHit MakeTransactionHit(const Purchase& purchase, std::wstring_view transactionId,
                                      std::wstring_view phash);

// What was bought. Carries the order's number as the host gave it, so none where the transaction
// had to be given one.
frame::TrackingHit MakeItemHit(const Purchase& purchase, std::wstring_view language);

} // namespace trackers
