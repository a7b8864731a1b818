#pragma once

#include "tools/collector/Answer.h"
#include "tools/collector/Authority.h"
#include "tools/collector/Connection.h"
#include "tools/collector/Hit.h"
#include "tools/collector/RequestReader.h"
#include "tools/collector/Socket.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace collector {

// What happens to a connection before a request can be read.
enum class EConnectionFault
{
    None,
    CloseBeforeTls,     // takes the client's greeting and closes
    StallHandshake,     // never answers the greeting
    UnknownCertificate, // signed by an authority that nobody trusts
    WrongHostCertificate,
    ExpiredCertificate
};

struct CollectorSettings
{
    int port = 0; // 0: any free one
    RequestLimits limits;
    std::size_t connections = 128; // at the same time; more are closed at once
    bool keepHits = true;          // false: hits are only counted and handed to `onHit`

    // Called for each hit in order, one at a time, before its answer; on a thread of the collector,
    // which it must not stop.
    std::function<void(const Hit&)> onHit;
};

// An HTTPS server on 127.0.0.1 that records every request and answers as analytics servers do, or
// as a test orders. TLS 1.2 and 1.3, HTTP/1.x, any method, any path.
//
// It runs its own accept loop over OpenSSL instead of an HTTP server library: those hand out
// decoded targets and sorted headers, repair lengths, and do not stop inside a handshake; here the
// exact bytes in both directions are the point.
//
// Unless told otherwise, /__utm.gif and /collect are answered with a pixel, /piwik.php with 204 (a
// pixel when the request does not say send_image=0), any other path with 404.
//
// Threads: any thread may call any operation, but Refuse(), Accept() and Stop() belong to one
// thread.
class CCollector
{
public:
    static constexpr std::size_t always = std::numeric_limits<std::size_t>::max();

    // Listens when it returns. Throws std::system_error when the port cannot be had.
    explicit CCollector(const CAuthority& authority, CollectorSettings wanted = {});
    CCollector(const CCollector&) = delete;
    CCollector& operator=(const CCollector&) = delete;
    ~CCollector() { Stop(); }

    int GetPort() const { return port; }

    // "https://127.0.0.1:PORT" and the path.
    std::string GetUrl(const std::string& path) const;

    std::vector<Hit> GetHits() const;
    std::size_t GetConnectionCount() const;

    // True once at least `count` hits (connections) were counted since the start or the last
    // Clear(), false when `timeout` passes first.
    bool WaitForHits(std::size_t count, std::chrono::milliseconds timeout) const;
    bool WaitForConnections(std::size_t count, std::chrono::milliseconds timeout) const;

    // True once no request that was read still waits for its answer to be sent.
    bool WaitUntilAnswered(std::chrono::milliseconds timeout) const;

    // Forgets hits and counts; sequence numbers go on.
    void Clear();

    // The next `count` connections suffer `fault`; the next `count` requests get `answer`. Orders
    // queue up behind each other, and precede AnswerPath().
    void Order(EConnectionFault fault, std::size_t count = 1);
    void Order(const Answer& answer, std::size_t count = 1);

    // Every request of that path, its query aside, gets `answer`.
    void AnswerPath(const std::string& path, const Answer& answer);

    // Back to regular behaviour for what comes next.
    void CancelOrders();

    // Ends all open connections; whatever stalls or waits on them ends.
    void Disconnect();

    // Connections are refused from now on, the open ones end; the port stays ours.
    void Refuse();

    // Ends Refuse().
    void Accept();

    // Ends everything at once, whatever is in progress, for good. May be called again.
    void Stop();

private:
    struct Running
    {
        std::thread thread;
        int socket = -1; // borrowed, for Disconnect(); -1 once the thread is through
    };
    template <class Subject>
    struct Ordered
    {
        Subject subject;
        std::size_t left;
    };
    struct ContextDeleter
    {
        void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
    };
    using CContextPtr = std::unique_ptr<SSL_CTX, ContextDeleter>;
    using AnswerPtr = std::shared_ptr<const Answer>;

    static CContextPtr MakeContext(const Identity& identity);
    void StopListening();
    void RunAccepting();
    void Start(CSocket accepted);
    void JoinFinished();
    void Run(Running& running, CSocket accepted, std::uint64_t number,
             EConnectionFault fault) noexcept;
    void Serve(CConnection& connection, std::uint64_t number, EConnectionFault fault);
    void ServeRequests(CConnection& connection, std::uint64_t number);
    void Record(Hit& hit);
    bool AnswerHit(CConnection& connection, Hit& hit);
    AnswerPtr TakeAnswer(const Hit& hit);
    SSL_CTX& GetContext(EConnectionFault fault) const;

    CollectorSettings settings;
    CContextPtr trusted;
    CContextPtr unknown;
    CContextPtr wrongHost;
    CContextPtr expired;
    CSocket listening;
    int port = 0;
    std::atomic<bool> accepting = false;
    std::thread acceptor;

    std::mutex recording; // held while a hit is numbered and handed to onHit; taken before `lock`

    mutable std::mutex lock; // guards everything below
    mutable std::condition_variable counted;
    std::list<Running> connections;
    std::vector<Hit> hits;
    std::size_t hitCount = 0;
    std::size_t connectionCount = 0;
    std::size_t answering = 0; // requests read and not yet answered
    std::uint64_t lastHit = 0;
    std::uint64_t lastConnection = 0;
    std::deque<Ordered<EConnectionFault>> orderedFaults;
    std::deque<Ordered<AnswerPtr>> orderedAnswers;
    std::map<std::string, AnswerPtr> pathAnswers;
};

} // namespace collector
