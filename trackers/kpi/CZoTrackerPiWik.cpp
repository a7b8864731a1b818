#include "trackers/kpi/CZoTrackerPiWik.h"

#include "env/InstallConfig.h"
#include "env/ModuleVersion.h"
#include "env/SystemDescription.h"
#include "frame/HostConfig.h"
#include "frame/UrlDelivery.h"
#include "frame/UserAgent.h"
#include "platform/Clock.h"
#include "trackers/kpi/KpiUserId.h"

namespace trackers {

using env::GetInstallConfigString;
using frame::EHitType;
using frame::TrackingHit;
using platform::CInternetSession;
using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr const wchar_t* defaultEndpoint = L"https://" ZO_KPI_HOST L"/piwik.php";
constexpr const wchar_t* siteAddress = ZO_SITE_ADDRESS;

// The site id that switches the tracker off.
constexpr const wchar_t* noSite = L"0";

} // namespace

CZoTrackerPiWik::CZoTrackerPiWik() : CTrackerBase(L"CZoTrackerPiWik::TrackingThreadFunction")
{
    client.endpoint = OpenQuery(GetInstallConfigString(L"web", L"PIWIKURL", defaultEndpoint));
    client.siteId = GetInstallConfigString(L"install", L"kpisite", L"1");
    hasSite = client.siteId != noSite;
    trackingEnabled = hasSite && env::GetInstallConfigInt(L"install", L"tracking", 0) == 1;
    client.language = ComposeLanguage(GetInstallConfigString(L"install", L"language", L"en_US"),
                                      TakeCountryCode(env::GetUserLanguageCode()));
    client.phash = GetInstallConfigString(L"install", L"PHASH", L"");
    client.kpiSource = GetInstallConfigString(L"install", L"KPISource", L"");
    client.siteAddress = siteAddress;
    ChooseProductName(L"");
    client.userAgent = frame::FormatUserAgent(GetProductName(), env::GetApplicationProductVersion(),
                                              env::DescribeSystem());
    StartWorker();
}

CZoTrackerPiWik::~CZoTrackerPiWik() { StopWorker(); }

void CZoTrackerPiWik::SetTrackingEnabled(bool enable) noexcept
{
    Guard([&] { SwitchInstallTracking(enable, hasSite); });
}

void CZoTrackerPiWik::ReadConfigurationOf(const std::wstring& hostPath)
{
    const std::wstring configPath = frame::FindConfigBeside(hostPath);
    if (configPath.empty())
        return;
    std::wstring language = GetInstallConfigString(L"install", L"Language", L"en_II", configPath);
    std::wstring phash = GetInstallConfigString(L"install", L"PHASH", L"", configPath);
    {
        const VnCriticalSectionLock lock(productLock);
        client.language = std::move(language);
        client.phash = std::move(phash);
    }
    std::wstring name = ReadConfiguredProductName(configPath);
    ChooseProductName(name.empty() ? env::GetFileProductName(hostPath) : std::move(name));
}

void CZoTrackerPiWik::ChooseProductName(std::wstring name)
{
    if (name.empty())
        name = ReadConfiguredProductName(L"");
    const VnCriticalSectionLock lock(productLock);
    productName = std::move(name);
}

void CZoTrackerPiWik::TrackPurchase(TrackerText, TrackerText, double, TrackerText,
                                    std::int32_t) noexcept
{
    Guard([&] {
        frame::HitView hit;
        hit.type = EHitType::Transaction;
        QueueHit(hit);
        hit.type = EHitType::Item;
        QueueHit(hit);
    });
}

void CZoTrackerPiWik::RunWorker()
{
    const auto session = frame::OpenDeliverySession(GetProductName(), stop);
    DrainInRounds(
        [&](const TrackingHit& hit) {
            if (IsTrackingEnabled())
                Process(session.get(), hit);
            return true;
        },
        [] { return true; });
}

void CZoTrackerPiWik::Process(CInternetSession* session, const TrackingHit& hit)
{
    if (stop.IsRequested() && (sendingFailed || !closing.MaySend()))
        return queue.Clear();
    const std::wstring url = BuildKpiRequestUrl(hit);
    if (!sendingFailed)
        sendingFailed =
            !frame::DeliverWithRetry([&] { return SendKpiRequest(session, url); }, closing, stop);
    if (!sendingFailed)
        stop.Wait(frame::pauseBetweenHits);
}

std::wstring CZoTrackerPiWik::BuildKpiRequestUrl(const TrackingHit& hit) const
{
    KpiMoment moment{GetKpiUserId(), platform::GetTickMilliseconds(), {}};
    const VnCriticalSectionLock lock(productLock);
    moment.productName = productName;
    return BuildKpiRequest(client, moment, hit);
}

bool CZoTrackerPiWik::SendKpiRequest(CInternetSession* session, const std::wstring& url) const
{
    std::wstring userAgent;
    {
        const VnCriticalSectionLock lock(productLock);
        userAgent = client.userAgent;
    }
    return frame::OpenTrackingUrl(session, url, frame::FormatUserAgentHeader(userAgent));
}

} // namespace trackers
