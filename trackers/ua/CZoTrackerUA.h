#pragma once

#include "frame/ClosingPhase.h"
#include "frame/TrackerBase.h"
#include "net/CZoHTTPComunicator.h"

#include <atomic>
#include <string>

namespace trackers {

// Reports the use of the product by the measurement protocol: one POST per hit.
class CZoTrackerUA final : public frame::CTrackerBase
{
public:
    // Reads the default configuration file and starts the worker. A name or id that is not empty
    // takes precedence over the file. Without a tracking id there is no worker, and hits are
    // dropped.
    CZoTrackerUA(const std::wstring& name, const std::wstring& /*unused*/,
                 const std::wstring& wantedTrackingId);
    ~CZoTrackerUA() override;

    void SetTrackingEnabled(bool enable) noexcept override;
    void DisableIdlePageviews(bool disable) noexcept override { noIdlePageviews = disable; }
    void SetContinueSession(bool continueSession) noexcept override
    {
        newSession = !continueSession;
    }
    void TrackPurchase(TrackerText itemName, TrackerText itemCode, double unitPrice,
                       TrackerText orderId, std::int32_t quantity) noexcept override;

    // The installation's identifier, found or made on first use.
    std::wstring GetClientId();

private:
    // What the configuration file says.
    struct Configuration
    {
        std::wstring endpoint;
        std::wstring protocolVersion;
        std::wstring trackingId;
        std::wstring phash;
        std::wstring language;
        bool enabled = false;
    };
    static Configuration ReadConfiguration(const std::wstring& path);
    void ReadConfigurationOf(const std::wstring& newHostPath) override;

    void ChooseProductName(std::wstring name) override;
    std::wstring FindProductName() const;
    void BuildUserAgent();

    // Sends the hits in order, each once. Two results in a row that say there is no connection at
    // all end delivery for good. After a long idle time a pageview keeps the session alive. At the
    // end the queue is emptied without pauses.
    void RunWorker() override;

    void Process(const frame::TrackingHit& hit);
    void Deliver(const std::wstring& payload);
    void KeepAlive();

    void BuildCommonPayload();
    std::wstring BuildHitPayload(const frame::TrackingHit& hit);

    Configuration configuration ZO_LOCKING(guarded_by(productLock));
    std::wstring hostPath ZO_LOCKING(guarded_by(productLock));
    // Empty: the default configuration file.
    std::wstring configPath ZO_LOCKING(guarded_by(productLock));
    std::wstring clientId ZO_LOCKING(guarded_by(productLock));
    std::wstring productUserId; // constant, as the next two
    std::wstring hostVersion;
    std::wstring commonPayload; // what the tracker was configured with at its construction
    std::atomic<bool> noIdlePageviews{false};
    std::atomic<bool> newSession{false};
    bool suppressStatsEvents = false; // constant
    net::CZoHTTPComunicator communicator{stop};
    frame::CClosingPhase closing{stop}; // the worker's only, as the others below
    bool sentWithoutConnection = false; // the latest send
    bool gaveUp = false;                // nothing more is sent for the tracker's life
    std::uint32_t rounds = 0;           // since the last look at being idle
};

} // namespace trackers
