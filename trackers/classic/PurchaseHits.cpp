#include "trackers/classic/PurchaseHits.h"

#include "env/Text.h"
#include "text/Format.h"

namespace trackers {

using frame::EHitType;
using frame::TrackingHit;

namespace {

constexpr double taxRate = 0.19;

} // namespace

TrackingHit MakeTransactionHit(const Purchase& purchase, std::wstring_view transactionId,
                               std::wstring_view phash)
{
    const double total = static_cast<double>(purchase.quantity) * purchase.unitPrice;
    TrackingHit hit;
    hit.type = EHitType::Transaction;
    hit.field1 = text::FormatText(L"&utmtid=%s&utmtst=%s&utmtto=%.2f&utmtsp=0.00&utmttx=%.2f",
                                  transactionId, phash, total, total * taxRate);
    return hit;
}

TrackingHit MakeItemHit(const Purchase& purchase, std::wstring_view language)
{
    TrackingHit hit;
    hit.type = EHitType::Item;
    hit.field1 = text::FormatText(L"&utmtid=%s&utmipc=%s&utmipn=%s&utmipr=%.2f&utmiqt=%d&utmiva=%s",
                                  purchase.orderId, purchase.itemCode,
                                  env::EncodeQueryText(purchase.itemName, true), purchase.unitPrice,
                                  purchase.quantity, language);
    return hit;
}

} // namespace trackers
