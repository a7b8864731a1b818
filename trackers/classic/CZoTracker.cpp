#include "trackers/classic/CZoTracker.h"

#include "env/InstallConfig.h"
#include "env/ModuleVersion.h"
#include "env/ProductUserId.h"
#include "env/SystemDescription.h"
#include "frame/HostConfig.h"
#include "frame/StatsSampling.h"
#include "platform/Clock.h"
#include "platform/SystemFacts.h"
#include "text/Format.h"
#include "trackers/classic/ClassicIdentity.h"
#include "trackers/classic/ContentFolder.h"
#include "trackers/classic/PurchaseHits.h"

namespace trackers {

using env::GetInstallConfigInt;
using env::GetInstallConfigString;
using frame::TrackingHit;
using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr const wchar_t* defaultEndpoint = L"https://" ZO_CLASSIC_HOST L"/__utm.gif?";
constexpr const wchar_t* defaultTrackingId = L"UA-73051829-04";
constexpr const wchar_t* defaultCompanyFolder = L"veltrano";
constexpr const wchar_t* defaultLanguage = L"en_II";

} // namespace

CZoTracker::CZoTracker(const std::wstring& productNameOverride,
                       const std::wstring& companyFolderWordOverride,
                       const std::wstring& trackingIdOverride)
    : CTrackerBase(L"CZoTracker::TrackingThreadFunction"),
      companyFolderWord(companyFolderWordOverride.empty() ? defaultCompanyFolder
                                                          : companyFolderWordOverride),
      showTraceBalloon(GetInstallConfigInt(L"install", L"TrackingTraceBalloon", 0) == 1),
      dropStatsEvents(frame::DrawDropsStatsEvents()),
      contentFolder(GetUserContentFolder(companyFolderWord, env::GetApplicationProductName())),
      history(contentFolder)
{
    trackingEnabled = GetInstallConfigInt(L"install", L"tracking", 0) == 1;
    ClassicClient& client = configuration.client;
    client.trackingId = trackingIdOverride.empty()
                            ? GetInstallConfigString(L"install", L"GAID", defaultTrackingId)
                            : trackingIdOverride;
    client.collectionUrl = GetInstallConfigString(L"install", L"GAURL", defaultEndpoint);
    client.language = GetInstallConfigString(L"install", L"Language", defaultLanguage);
    client.phash = GetInstallConfigString(L"install", L"PHASH", L"");
    configuration.startTick = platform::GetTickMilliseconds();
    configuration.systemDescription = env::DescribeSystem();
    const platform::ScreenSize screen = platform::GetScreenSize();
    client.screenWidth = text::FormatText(L"%d", screen.width);
    client.screenHeight = text::FormatText(L"%d", screen.height);
    configuration.productUserId = env::GetProductUserId(L"");
    configuration.productVersion = env::GetApplicationProductVersion();
    configuration.hostProductName = env::GetApplicationProductName();
    client.domainHash = MakeDomainHash(client.trackingId);
    client.visitorNumber = MakeVisitorNumber(configuration.productUserId);
    ChooseProductName(productNameOverride);
    StartWorker();
}

CZoTracker::~CZoTracker()
{
    StopWorker();
    Guard([this] {
        RestoreUserContentFolder(contentFolder);
        history.SaveHistory();
    });
}

void CZoTracker::SetTrackingEnabled(bool enable) noexcept
{
    Guard([&] { SwitchInstallTracking(enable, true); });
}

void CZoTracker::ReadConfigurationOf(const std::wstring& hostPath)
{
    const std::wstring configPath = frame::FindConfigBeside(hostPath);
    Configuration next = GetConfiguration();
    next.client.language =
        GetInstallConfigString(L"install", L"Language", defaultLanguage, configPath);
    next.client.phash = GetInstallConfigString(L"install", L"PHASH", L"", configPath);
    next.startTick = platform::GetTickMilliseconds();
    next.productVersion = env::GetFileProductVersion(hostPath);
    next.hostProductName = env::GetFileProductName(hostPath);
    next.productUserId = env::GetProductUserId(next.hostProductName);
    next.client.domainHash = MakeDomainHash(next.client.trackingId);
    next.client.visitorNumber = MakeVisitorNumber(next.productUserId);
    std::wstring name = GetInstallConfigString(L"install", L"ProductName", L"", configPath);

    const VnCriticalSectionLock lock(productLock);
    productName = name.empty() ? next.hostProductName : std::move(name);
    configuration = std::move(next);
}

void CZoTracker::ChooseProductName(std::wstring name)
{
    if (name.empty())
        name = ReadConfiguredProductName(L"");
    const VnCriticalSectionLock lock(productLock);
    productName = name.empty() ? configuration.hostProductName : std::move(name);
}

CZoTracker::Configuration CZoTracker::GetConfiguration() const
{
    const VnCriticalSectionLock lock(productLock);
    Configuration current = configuration;
    current.client.productName = productName;
    return current;
}

void CZoTracker::TrackPurchase(TrackerText itemName, TrackerText itemCode, double unitPrice,
                               TrackerText orderId, std::int32_t quantity) noexcept
{
    Guard([&] {
        const Purchase purchase{itemName.View(), itemCode.View(), unitPrice, orderId.View(),
                                quantity};
        std::wstring transactionId(purchase.orderId);
        TrackingHit transaction;
        TrackingHit item;
        {
            const VnCriticalSectionLock lock(productLock);
            if (transactionId.empty())
                transactionId =
                    text::FormatText(L"%s_%s", configuration.productUserId, sessionHitNumber);
            transaction = MakeTransactionHit(purchase, transactionId, configuration.client.phash);
            item = MakeItemHit(purchase, configuration.client.language);
        }
        QueueHit(frame::ViewHit(transaction));
        QueueHit(frame::ViewHit(item));
    });
}

void CZoTracker::QueueHit(const frame::HitView& hit)
{
    queue.Append(hit, [&](frame::CPackedHits& led) {
        if (!firstHit.IsPending())
            return;
        const VnCriticalSectionLock lock(productLock); // always behind the queue's
        firstHit.Lead(led, hit.type, configuration.client.phash);
    });
}

} // namespace trackers
