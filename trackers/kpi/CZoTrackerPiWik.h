#pragma once

#include "frame/ClosingPhase.h"
#include "frame/TrackerBase.h"
#include "platform/Internet.h"
#include "trackers/kpi/KpiRequest.h"

#include <string>

namespace trackers {

// Reports the use of the product to the maker's KPI server, one visit request per hit. Knows no
// sessions and no keep-alive.
class CZoTrackerPiWik final : public frame::CTrackerBase
{
public:
    // Reads the default configuration file and starts the worker.
    CZoTrackerPiWik();
    ~CZoTrackerPiWik() override;

    void SetTrackingEnabled(bool enable) noexcept override;
    void DisableIdlePageviews(bool) noexcept override {}
    void SetContinueSession(bool) noexcept override {}
    void TrackPurchase(TrackerText itemName, TrackerText itemCode, double unitPrice,
                       TrackerText orderId, std::int32_t quantity) noexcept override;

private:
    // Sends the hits in order, each at most twice. After the second failure of one hit nothing is
    // sent any more, but hits are still taken, so that the queue does not grow. At the end the
    // queue is emptied without pauses.
    void RunWorker() override;
    void Process(platform::CInternetSession* session, const frame::TrackingHit& hit);

    std::wstring BuildKpiRequestUrl(const frame::TrackingHit& hit) const;

    // One attempt; true when the server's answer could be opened.
    bool SendKpiRequest(platform::CInternetSession* session, const std::wstring& url) const;

    void ChooseProductName(std::wstring name) override;
    void ReadConfigurationOf(const std::wstring& hostPath) override;

    KpiClient client ZO_LOCKING(guarded_by(productLock));
    bool hasSite = true;        // constant
    bool sendingFailed = false; // the worker's only
    frame::CClosingPhase closing{stop};
};

} // namespace trackers
