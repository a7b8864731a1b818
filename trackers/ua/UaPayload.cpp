#include "trackers/ua/UaPayload.h"

#include "env/HostPaths.h"
#include "env/Text.h"
#include "text/Format.h"

namespace trackers {

using env::AppendEncoded;
using frame::EHitType;
using frame::TrackingHit;

namespace {

void AppendEncodedIfAny(std::wstring& payload, std::wstring_view key, std::wstring_view value)
{
    if (!value.empty())
        AppendEncoded(payload, key, value);
}

void AppendRawIfAny(std::wstring& payload, std::wstring_view key, std::wstring_view value)
{
    if (!value.empty())
        payload.append(key).append(value);
}

void AppendPagePath(std::wstring& payload, std::wstring_view page)
{
    AppendEncoded(payload, L"&dp=", L"/");
    AppendEncoded(payload, L"", page);
}

void AppendPageview(std::wstring& payload, std::wstring_view page)
{
    payload += L"&t=pageview";
    AppendPagePath(payload, page);
}

void AppendEvent(std::wstring& payload, const TrackingHit& hit)
{
    payload += L"&t=event";
    AppendEncoded(payload, L"&ec=", hit.field2);
    AppendEncoded(payload, L"&ea=", hit.field4);
    AppendEncodedIfAny(payload, L"&el=", hit.field3);
    AppendRawIfAny(payload, L"&ev=", hit.field1);
}

// What a transaction and its items have in common.
void AppendOrder(std::wstring& payload, std::wstring_view productName, const TrackingHit& hit)
{
    AppendPagePath(payload, productName);
    AppendEncoded(payload, L"&ti=", hit.field2);
    AppendEncodedIfAny(payload, L"&ta=", hit.field4);
}

void AppendTransaction(std::wstring& payload, std::wstring_view productName, const TrackingHit& hit)
{
    payload += L"&t=transaction";
    AppendOrder(payload, productName, hit);
    AppendRawIfAny(payload, L"&tr=", hit.field1);
}

void AppendItem(std::wstring& payload, std::wstring_view productName, const TrackingHit& hit)
{
    payload += L"&t=item";
    AppendOrder(payload, productName, hit);
    AppendEncoded(payload, L"&in=", hit.field3);
    payload += hit.field1;
}

} // namespace

std::wstring BuildCommonPayload(const UaClient& client)
{
    std::wstring payload;
    payload.append(L"v=").append(client.protocolVersion);
    payload.append(L"&tid=").append(client.trackingId);
    payload += L"&aip=1";
    AppendEncoded(payload, L"&ds=", env::GetFileName(client.hostPath));
    payload.append(L"&cid=").append(client.clientId);
    AppendEncoded(payload, L"&uid=", client.productUserId);
    AppendEncoded(payload, L"&cs=", client.phash);
    AppendEncoded(payload, L"&cn=", L"(partners)");
    AppendEncoded(payload, L"&cm=", L"(direct)");
    text::AppendFormat(payload, L"&sr=%dx%d", client.screen.width, client.screen.height);
    AppendEncoded(payload, L"&ul=", client.language);
    AppendEncoded(payload, L"&cd=", client.productName);
    return payload;
}

std::wstring BuildHitPayload(std::wstring_view commonPayload, std::wstring_view productName,
                             const TrackingHit& hit)
{
    std::wstring payload(commonPayload);
    switch (hit.type)
    {
    case EHitType::Pageview:
        AppendPageview(payload, productName);
        return payload;
    case EHitType::Message:
        AppendPageview(payload, hit.field5);
        return payload;
    case EHitType::Event:
        AppendEvent(payload, hit);
        return payload;
    case EHitType::Transaction:
        AppendTransaction(payload, productName, hit);
        return payload;
    case EHitType::Item:
        AppendItem(payload, productName, hit);
        return payload;
    case EHitType::None:
    case EHitType::CustomVariable:
        break;
    }
    return {};
}

void AppendSessionStart(std::wstring& payload) { payload += L"&sc=start"; }

UaPurchase MakePurchaseHits(std::wstring_view itemCode, double unitPrice, std::wstring_view orderId,
                            std::int32_t quantity, std::wstring_view affiliation)
{
    UaPurchase purchase;
    purchase.transaction.type = EHitType::Transaction;
    purchase.transaction.field1 = text::FormatText(L"%.2f", quantity * unitPrice);
    purchase.transaction.field2 = orderId;
    purchase.transaction.field4 = affiliation;
    purchase.item.type = EHitType::Item;
    purchase.item.field1 = text::FormatText(L"&ip=%.2f&iq=%d", unitPrice, quantity);
    purchase.item.field2 = orderId;
    purchase.item.field3 = itemCode;
    purchase.item.field4 = affiliation;
    return purchase;
}

std::wstring MakeOrderId(std::wstring_view clientId, std::uint32_t tick)
{
    return text::FormatText(L"%s_%d", clientId, tick);
}

} // namespace trackers
