#include "trackers/kpi/KpiRequest.h"

#include "env/Text.h"
#include "text/Case.h"
#include "text/Format.h"

namespace trackers {

using env::AppendEncoded;

namespace {

void AppendEvent(std::wstring& url, const frame::TrackingHit& hit)
{
    AppendEncoded(url, L"&e_c=", hit.field2);
    AppendEncoded(url, L"&e_a=", hit.field4);
    AppendEncoded(url, L"&e_n=", hit.field3);
    url.append(L"&e_v=").append(hit.field1);
}

} // namespace

std::wstring BuildKpiRequest(const KpiClient& client, const KpiMoment& moment,
                             const frame::TrackingHit& hit)
{
    std::wstring url = client.endpoint;
    url.append(L"send_image=0&rec=1&apiv=1&idsite=").append(client.siteId);
    url.append(L"&ua=").append(client.userAgent);
    url.append(L"&url=").append(client.siteAddress);
    url.append(L"&uid=").append(moment.userId);
    AppendEncoded(url, L"&lang=", client.language);
    text::AppendFormat(url, L"&rand=%d", moment.tick);
    url.append(L"&_rcn=").append(client.phash);
    url.append(L"&_rck=").append(client.kpiSource);
    url.append(L"&_cvar={\"1\":[\"product\", \"").append(moment.productName).append(L"\"]}");
    if (hit.type == frame::EHitType::Event)
        AppendEvent(url, hit);
    return url;
}

std::wstring OpenQuery(std::wstring endpoint)
{
    endpoint += endpoint.find(L'?') == endpoint.npos ? L'?' : L'&';
    return endpoint;
}

std::wstring TakeCountryCode(const std::wstring& localeCode)
{
    return localeCode.substr(localeCode.find(L'_') + 1);
}

std::wstring ComposeLanguage(const std::wstring& configured, const std::wstring& countryCode)
{
    std::wstring language = configured.substr(0, 2) + L"-" + countryCode;
    text::MakeLower(language);
    return language;
}

} // namespace trackers
