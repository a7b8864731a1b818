#pragma once

#include "frame/ClosingPhase.h"
#include "frame/TrackerBase.h"
#include "platform/Internet.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/classic/FirstHitRule.h"
#include "trackers/classic/SessionStore.h"
#include "trackers/classic/TraceBalloon.h"
#include "trackers/classic/VisitHistory.h"
#include "trackers/classic/VisitorState.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace trackers {

// Reports the use of the product to a classic collection server, hit by hit, with visitor, session
// and the number of times each event has occurred on this computer.
class CZoTracker final : public frame::CTrackerBase
{
public:
    // Reads the default configuration file and starts the worker, which loads the history. Empty
    // arguments leave the configured product name, the suite's folder "veltrano" and the
    // configured tracking id.
    CZoTracker(const std::wstring& productNameOverride,
               const std::wstring& companyFolderWordOverride,
               const std::wstring& trackingIdOverride);

    // Drops the hits that are still queued and saves the history.
    ~CZoTracker() override;

    void SetTrackingEnabled(bool enable) noexcept override;
    void DisableIdlePageviews(bool disable) noexcept override { idlePageviewsDisabled = disable; }
    void SetContinueSession(bool keep) noexcept override { continueSession = keep; }
    void TrackPurchase(TrackerText itemName, TrackerText itemCode, double unitPrice,
                       TrackerText orderId, std::int32_t quantity) noexcept override;

private:
    // What Initialize() may change while the worker is at work.
    struct Configuration
    {
        ClassicClient client; // its product name only in what GetConfiguration() returns
        std::wstring hostProductName;
        std::wstring productUserId;
        std::wstring productVersion;
        std::wstring systemDescription;
        std::uint32_t startTick = 0; // milliseconds
    };

    // Sends the hits in order, each at most twice; after the second failure of one hit nothing is
    // sent any more in this run, but hits are still counted. A pageview keeps an idle session
    // alive. At the end the hit in hand is finished.
    void RunWorker() override;
    void ProcessQueue(platform::CInternetSession& session);

    // False when the hit is an event for once only that has occurred before; it is counted then,
    // but not sent.
    bool Process(platform::CInternetSession& session, frame::TrackingHit& hit);

    // Counts an event, gives one without a value its count as value, and tells whether it is to be
    // sent.
    bool CountOccurrence(frame::TrackingHit& hit);

    void ShareSessionHitNumber();
    void KeepSessionAlive();

    // One attempt; true when the server's answer could be opened.
    bool SendTrackingRequest(platform::CInternetSession& session, const std::wstring& url,
                             const Configuration& current) const;

    void QueueHit(const frame::HitView& hit) override;
    void ReadConfigurationOf(const std::wstring& hostPath) override;
    void ChooseProductName(std::wstring name) override;
    Configuration GetConfiguration() const;

    const std::wstring companyFolderWord;
    const bool showTraceBalloon;
    const bool dropStatsEvents;
    std::atomic<bool> idlePageviewsDisabled{false};
    std::atomic<bool> continueSession{false};
    Configuration configuration ZO_LOCKING(guarded_by(productLock));
    std::wstring sessionHitNumber ZO_LOCKING(guarded_by(productLock));
    CFirstHitRule firstHit;           // under the lock of the queue
    const std::wstring contentFolder; // with a backslash at its end, or as it is configured
    CVisitHistory history;

    // The worker's only.
    CVisitorState visitor;
    frame::CClosingPhase closing{stop};
    std::optional<CTraceBalloon> balloon;
    std::uint32_t idleRounds = 0; // since the latest request was built
    bool offline = false;         // nothing is sent any more
};

} // namespace trackers
