#include "trackers/ua/CZoTrackerUA.h"

#include "env/FileSystem.h"
#include "env/HostPaths.h"
#include "env/InstallConfig.h"
#include "env/ModuleVersion.h"
#include "env/ProductUserId.h"
#include "env/SystemDescription.h"
#include "env/Text.h"
#include "frame/HostConfig.h"
#include "frame/StatsSampling.h"
#include "frame/UserAgent.h"
#include "platform/Clock.h"
#include "platform/TraceMessage.h"
#include "trackers/ua/ClientId.h"
#include "trackers/ua/UaPayload.h"

#include <optional>

namespace trackers {

using env::GetInstallConfigInt;
using env::GetInstallConfigString;
using frame::TrackingHit;
using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr const wchar_t* defaultEndpoint = L"https://" ZO_UA_HOST L"/collect";
constexpr std::chrono::milliseconds pauseBetweenHits{50};
constexpr std::uint32_t roundsBetweenPageviews = 100; // of about 2 seconds when idle

constexpr bool IsDelivered(std::int32_t errorCode)
{
    return errorCode != net::httpNoConnection && errorCode != net::httpNotSent &&
           errorCode != net::httpUnforeseen;
}

} // namespace

CZoTrackerUA::CZoTrackerUA(const std::wstring& name, const std::wstring&,
                           const std::wstring& wantedTrackingId)
    : CTrackerBase(L"CZoTrackerUA::TrackingThreadFunction"),
      hostPath(env::GetApplicationFilePath()),
      productUserId(env::GetProductUserId(L"")),
      hostVersion(env::GetApplicationProductVersion())
{
    configuration = ReadConfiguration(configPath);
    trackingEnabled = configuration.enabled;
    if (!wantedTrackingId.empty())
        configuration.trackingId = wantedTrackingId;
    ChooseProductName(name);
    if (configuration.trackingId.empty())
    {
        platform::TraceMessage(3, L"ERROR UA ### No tracking-id found");
        queue.Close(); // what nobody takes would only fill the host's memory
        return;
    }
    suppressStatsEvents = frame::DrawDropsStatsEvents();
    BuildCommonPayload();
    StartWorker();
}

CZoTrackerUA::~CZoTrackerUA() { StopWorker(); }

// --- configuration -----------------------------------------------------------------------------

CZoTrackerUA::Configuration CZoTrackerUA::ReadConfiguration(const std::wstring& path)
{
    Configuration read;
    read.endpoint = GetInstallConfigString(L"UA", L"URL", defaultEndpoint, path);
    read.protocolVersion = GetInstallConfigString(L"UA", L"Version", L"1", path);
    read.trackingId = GetInstallConfigString(L"UA", L"Id", L"", path);
    read.phash = GetInstallConfigString(L"install", L"phash", L"", path);
    read.language = GetInstallConfigString(L"install", L"language", L"", path);
    read.enabled = GetInstallConfigInt(L"UA", L"Enabled", 0, path) == 1;
    return read;
}

void CZoTrackerUA::ReadConfigurationOf(const std::wstring& newHostPath)
{
    std::wstring newConfigPath = frame::GetConfigPathBeside(newHostPath);
    std::optional<Configuration> read;
    if (env::PathExists(newConfigPath))
        read = ReadConfiguration(newConfigPath);
    const VnCriticalSectionLock lock(productLock);
    hostPath = newHostPath;
    configPath = std::move(newConfigPath);
    if (!read)
        return;
    configuration = std::move(*read);
    trackingEnabled = configuration.enabled;
}

void CZoTrackerUA::SetTrackingEnabled(bool enable) noexcept
{
    Guard([&] {
        if ((GetInstallConfigInt(L"UA", L"Enabled", 0) == 1) == enable)
            return;
        trackingEnabled = enable;
        ReportTrackingSwitch(enable);
        env::SetInstallConfigString(L"UA", L"Enabled", enable ? L"1" : L"0");
        env::SetInstallConfigString(L"install", L"tracking", enable ? L"1" : L"0");
    });
}

void CZoTrackerUA::ChooseProductName(std::wstring name)
{
    if (name.empty())
        name = FindProductName();
    {
        const VnCriticalSectionLock lock(productLock);
        productName = std::move(name);
    }
    GetClientId();
    BuildUserAgent();
}

std::wstring CZoTrackerUA::FindProductName() const
{
    std::wstring config;
    std::wstring host;
    {
        const VnCriticalSectionLock lock(productLock);
        config = configPath;
        host = hostPath;
    }
    std::wstring name = ReadConfiguredProductName(config);
    return name.empty() ? env::GetFileProductName(host) : name;
}

void CZoTrackerUA::BuildUserAgent()
{
    const std::wstring system = env::DescribeSystem();
    const VnCriticalSectionLock lock(productLock); // the latest name has the last word
    communicator.SetRequestHeaders(L"", L"",
                                   frame::FormatUserAgent(productName, hostVersion, system));
}

std::wstring CZoTrackerUA::GetClientId()
{
    const VnCriticalSectionLock lock(productLock);
    if (clientId.empty())
        clientId = FindOrMakeClientId(productUserId);
    return clientId;
}

// --- hits --------------------------------------------------------------------------------------

void CZoTrackerUA::TrackPurchase(TrackerText, TrackerText itemCode, double unitPrice,
                                 TrackerText orderId, std::int32_t quantity) noexcept
{
    Guard([&] {
        const std::wstring order = orderId.View().empty()
                                       ? MakeOrderId(GetClientId(), platform::GetTickMilliseconds())
                                       : std::wstring(orderId.View());
        std::wstring phash;
        {
            const VnCriticalSectionLock lock(productLock);
            phash = configuration.phash;
        }
        const UaPurchase purchase =
            MakePurchaseHits(itemCode.View(), unitPrice, order, quantity, phash);
        QueueHit(frame::ViewHit(purchase.transaction));
        QueueHit(frame::ViewHit(purchase.item));
    });
}

void CZoTrackerUA::BuildCommonPayload()
{
    const VnCriticalSectionLock lock(productLock);
    commonPayload = trackers::BuildCommonPayload(
        {configuration.protocolVersion, configuration.trackingId, hostPath, GetClientId(),
         productUserId, configuration.phash, configuration.language, productName,
         platform::GetScreenSize()});
}

std::wstring CZoTrackerUA::BuildHitPayload(const TrackingHit& hit)
{
    std::wstring payload = trackers::BuildHitPayload(commonPayload, GetProductName(), hit);
    if (!payload.empty() && newSession.exchange(false))
        AppendSessionStart(payload);
    return payload;
}

// --- the worker --------------------------------------------------------------------------------

void CZoTrackerUA::RunWorker()
{
    DrainInRounds(
        [this](const TrackingHit& hit) {
            if (!IsTrackingEnabled())
                return false;
            Process(hit);
            return !gaveUp;
        },
        [this] {
            if (++rounds >= roundsBetweenPageviews && !stop.IsRequested())
                KeepAlive();
            return !gaveUp;
        });
    if (gaveUp)
        return queue.Close();
    communicator.CloseSession();
}

void CZoTrackerUA::Process(const TrackingHit& hit)
{
    if (!closing.MaySend())
        return queue.Clear();
    const bool dropped = suppressStatsEvents && frame::IsStatsEvent(hit);
    const std::wstring payload = dropped ? std::wstring() : BuildHitPayload(hit);
    if (!payload.empty())
        Deliver(payload);
    if (!gaveUp)
        stop.Wait(pauseBetweenHits);
}

void CZoTrackerUA::Deliver(const std::wstring& payload)
{
    std::wstring url;
    {
        const VnCriticalSectionLock lock(productLock);
        url = configuration.endpoint;
    }
    text::AppendFormat(url, L"?z=%d", platform::GetTickMilliseconds());
    communicator.PostContent(std::move(url), env::Utf16ToUtf8(payload), -1, 0, false);
    closing.NoteDelivery(IsDelivered(communicator.errorCode));
    const bool wasWithout = sentWithoutConnection;
    sentWithoutConnection = communicator.errorCode == net::httpNoConnection;
    gaveUp = wasWithout && sentWithoutConnection;
}

void CZoTrackerUA::KeepAlive()
{
    rounds = 0;
    if (!noIdlePageviews && IsTrackingEnabled())
        TrackPageview();
}

} // namespace trackers
