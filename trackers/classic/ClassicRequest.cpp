#include "trackers/classic/ClassicRequest.h"

#include "env/Text.h"
#include "text/Case.h"
#include "text/Format.h"

#include <span>

namespace trackers {

using env::AppendEncoded;
using frame::EHitType;
using frame::TrackingHit;

namespace {

constexpr std::size_t usualLength = 1024; // units

template <class... Pieces>
void Append(std::wstring& url, const Pieces&... pieces)
{
    (url.append(pieces), ...);
}

// The server expects extension expressions in capitals, their escapes and texts alike.
void CapitalizeFrom(std::wstring& url, std::size_t start)
{
    text::MakeUpper(std::span(url).subspan(start));
}

// 5(category*action*label)(value)
void AppendEvent(std::wstring& url, const TrackingHit& hit)
{
    url += L"&utmt=event&utme=";
    const std::size_t expression = url.size();
    AppendEncoded(url, L"5(", hit.field2);
    AppendEncoded(url, L"*", hit.field4);
    AppendEncoded(url, L"*", hit.field3);
    AppendEncoded(url, L")(", hit.field1);
    url += L')';
    CapitalizeFrom(url, expression);
    AppendEncoded(url, L"&utmp=", hit.field5);
}

// 8(slot!name)9(slot!value)11(slot!scope)
void AppendCustomVariable(std::wstring& url, const TrackingHit& hit)
{
    url += L"&utmt=event&utme=";
    const std::size_t expression = url.size();
    AppendEncoded(url, L"8(", hit.field2);
    AppendEncoded(url, L"!", hit.field3);
    AppendEncoded(url, L")9(", hit.field2);
    AppendEncoded(url, L"!", hit.field1);
    AppendEncoded(url, L")11(", hit.field2);
    AppendEncoded(url, L"!", hit.field4);
    url += L')';
    CapitalizeFrom(url, expression);
    AppendEncoded(url, L"&utmp=", hit.field5);
}

void AppendHit(std::wstring& url, const TrackingHit& hit, const std::wstring& encodedProduct)
{
    switch (hit.type)
    {
    case EHitType::None:
        break;
    case EHitType::Pageview:
        Append(url, L"&utmp=", encodedProduct);
        break;
    case EHitType::Event:
        AppendEvent(url, hit);
        break;
    case EHitType::Message:
        AppendEncoded(url, L"&utmp=", hit.field5);
        break;
    case EHitType::Transaction:
        Append(url, L"&utmt=tran&utmp=", encodedProduct, hit.field1);
        break;
    case EHitType::Item:
        Append(url, L"&utmt=item&utmp=", encodedProduct, hit.field1);
        break;
    case EHitType::CustomVariable:
        AppendCustomVariable(url, hit);
        break;
    }
}

// The cookies that the tracking code keeps in a browser: visitor, session and, when there is a
// campaign, its source.
void AppendCookies(std::wstring& url, const ClassicClient& client, const ClassicVisit& visit)
{
    Append(url, L"&utmcc=__utma%3D", client.domainHash, L".", client.visitorNumber, L".",
           visit.firstVisitTime, L".", visit.previousVisitTime, L".", visit.currentVisitTime, L".",
           visit.sessionCount, L"%3B%2B");
    Append(url, L"__utmb%3D", client.domainHash, L".", visit.sessionHitNumber, L".10.",
           visit.currentVisitTime, L"%3B%2B");
    Append(url, L"__utmc%3D", client.domainHash);
    if (!client.phash.empty())
        Append(url, L"%3B%2B__utmz%3D", client.domainHash, L".", visit.currentVisitTime, L".",
               visit.sessionCount, L".1.utmcsr=(", client.phash,
               L")|utmccn=(partners)|utmcmd=(unknown)");
}

} // namespace

std::wstring BuildClassicRequest(const ClassicClient& client, const ClassicVisit& visit,
                                 const TrackingHit& hit)
{
    const std::wstring product = env::EncodeQueryText(client.productName, true);
    std::wstring url;
    url.reserve(usualLength);
    Append(url, client.collectionUrl, L"utmwv=5.4.3&utms=", visit.sessionHitNumber);
    text::AppendFormat(url, L"&utmn=%I64d", visit.hitNumber);
    Append(url, L"&utmac=", client.trackingId);
    Append(url, L"&utmsr=", client.screenWidth, L"x", client.screenHeight);
    AppendHit(url, hit, product);
    Append(url, L"&utmhn=", product, L"&utmcs=UTF-8&utmdt=", product);
    AppendEncoded(url, L"&utmul=", client.language);
    Append(url, L"&utmr=", product, L"&aip=1");
    AppendCookies(url, client, visit);
    return url;
}

} // namespace trackers
