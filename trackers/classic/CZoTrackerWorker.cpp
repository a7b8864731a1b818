#include "frame/StatsSampling.h"
#include "frame/UrlDelivery.h"
#include "frame/UserAgent.h"
#include "text/Format.h"
#include "trackers/classic/CZoTracker.h"

namespace trackers {

using frame::EHitType;
using frame::TrackingHit;
using platform::CInternetSession;
using platform::EInternetOption;
using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr std::uint32_t sessionTimeout = 1000; // milliseconds
constexpr std::uint32_t keepAliveRounds = 100;

// Null when the system has none.
std::unique_ptr<CInternetSession> OpenSession(const std::wstring& agent,
                                              const platform::CStopSignal& stop)
try
{
    auto session = frame::OpenDeliverySession(agent, stop);
    if (session)
        for (const EInternetOption option :
             {EInternetOption::ConnectTimeout, EInternetOption::SendTimeout,
              EInternetOption::ReceiveTimeout, EInternetOption::DataSendTimeout,
              EInternetOption::DataReceiveTimeout})
            session->SetOption(option, sessionTimeout);
    return session;
}
catch (const platform::CInternetException&)
{
    return nullptr;
}

} // namespace

void CZoTracker::RunWorker()
{
    history.LoadHistory(); // here, because it would hold up the host's start
    if (showTraceBalloon)
        balloon.emplace(GetProductName(), stop);
    if (const auto session = OpenSession(GetProductName(), stop))
        while (!stop.IsRequested())
        {
            ++idleRounds;
            ProcessQueue(*session);
            KeepSessionAlive();
            stop.Wait(frame::idlePause);
        }
    else
        queue.Close();
    balloon.reset();
}

void CZoTracker::ProcessQueue(CInternetSession& session)
{
    for (TrackingHit hit = queue.Take(); hit.type != EHitType::None; hit = queue.Take())
    {
        if (!IsTrackingEnabled())
            return;
        const bool isDropped = dropStatsEvents && frame::IsStatsEvent(hit);
        const bool isRepeated = !isDropped && !Process(session, hit);
        if (!isRepeated && !offline)
            stop.Wait(frame::pauseBetweenHits);
        if (stop.IsRequested())
            return;
    }
}

bool CZoTracker::Process(CInternetSession& session, TrackingHit& hit)
{
    const Configuration current = GetConfiguration();
    const CSessionStore store(companyFolderWord, current.hostProductName);
    visitor.LoadVisitorState(store, continueSession);
    idleRounds = 0;
    visitor.CountRequest(store, current.startTick);
    ShareSessionHitNumber();
    if (!CountOccurrence(hit))
        return false;
    const std::wstring url = BuildClassicRequest(current.client, visitor.GetVisit(), hit);
    if (balloon)
        balloon->Show(DescribeHit(hit, current.client.productName));
    if (offline)
        return true;
    offline = !frame::DeliverWithRetry([&] { return SendTrackingRequest(session, url, current); },
                                       closing, stop);
    if (offline && visitor.GetVisit().sessionHitNumber == L"1")
        visitor.RollBackSessionStart(store);
    return true;
}

void CZoTracker::ShareSessionHitNumber()
{
    const VnCriticalSectionLock lock(productLock);
    sessionHitNumber = visitor.GetVisit().sessionHitNumber;
}

bool CZoTracker::CountOccurrence(TrackingHit& hit)
{
    if (hit.type != EHitType::Event)
        return true;
    const std::int32_t count = history.CountEventOccurrence(hit);
    if (hit.field1.empty())
        hit.field1 = text::FormatText(L"%d", count);
    return !hit.onceOnly || count == 1;
}

bool CZoTracker::SendTrackingRequest(CInternetSession& session, const std::wstring& url,
                                     const Configuration& current) const
{
    const std::wstring agent = frame::FormatUserAgent(
        current.client.productName, current.productVersion, current.systemDescription);
    return frame::OpenTrackingUrl(&session, url, frame::FormatUserAgentHeader(agent));
}

void CZoTracker::KeepSessionAlive()
{
    if (idleRounds < keepAliveRounds || stop.IsRequested() || offline)
        return;
    idleRounds = 0;
    if (!idlePageviewsDisabled)
        TrackPageview();
}

} // namespace trackers
