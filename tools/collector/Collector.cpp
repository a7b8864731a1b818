#include "tools/collector/Collector.h"

#include "tools/collector/Endpoint.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace collector {

namespace {

Answer MakeDefaultAnswer(const Hit& hit)
{
    switch (GetEndpoint(hit.target))
    {
    case EEndpoint::Classic:
    case EEndpoint::Measurement:
        return MakePixel();
    case EEndpoint::Kpi:
        return hit.target.find("send_image=0") == std::string::npos ? MakePixel() : MakeAnswer(204);
    case EEndpoint::Other:
        break;
    }
    return MakeAnswer(404, "Nothing is collected here.\n", {{"Content-Type", "text/plain"}});
}

Answer MakeRejection(ERead read)
{
    const int status = read == ERead::HeadTooLarge ? 431 : read == ERead::BodyTooLarge ? 413 : 400;
    return MakeAnswerWithoutLength(status, "The request is malformed or too large.\n");
}

bool WantsToStay(const Hit& hit)
{
    const std::string wish = FindHeader(hit, "Connection");
    return hit.version == "HTTP/1.0" ? EqualsIgnoringCase(wish, "keep-alive")
                                     : !EqualsIgnoringCase(wish, "close");
}

// The first ordered subject, and one less of it; `otherwise` when nothing is ordered.
template <class Queue, class Subject>
Subject TakeOrdered(Queue& queue, Subject otherwise)
{
    if (queue.empty())
        return otherwise;
    Subject subject = queue.front().subject;
    if (queue.front().left != CCollector::always && --queue.front().left == 0)
        queue.pop_front();
    return subject;
}

// OpenSSL writes to sockets in a way that raises SIGPIPE when the client is gone.
void IgnoreBrokenPipes()
{
    sigset_t broken;
    sigemptyset(&broken);
    sigaddset(&broken, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &broken, nullptr);
}

} // namespace

CCollector::CCollector(const CAuthority& authority, CollectorSettings wanted)
    : settings(std::move(wanted)),
      trusted(MakeContext(authority.GetServer())),
      unknown(MakeContext(authority.GetUnknown())),
      wrongHost(MakeContext(authority.GetWrongHost())),
      expired(MakeContext(authority.GetExpired())),
      listening(BindLoopback(settings.port)),
      port(GetBoundPort(listening))
{
    Accept();
}

CCollector::CContextPtr CCollector::MakeContext(const Identity& identity)
{
    CContextPtr context(SSL_CTX_new(TLS_server_method()));
    if (!context || SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) != 1 ||
        SSL_CTX_use_certificate(context.get(), identity.certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), identity.key.get()) != 1)
        throw std::runtime_error("OpenSSL cannot use the collector's certificate");
    // A resumed session would skip the certificate, and with it an ordered fault.
    SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET);
    SSL_CTX_set_num_tickets(context.get(), 0);
    return context;
}

std::string CCollector::GetUrl(const std::string& path) const
{
    return "https://127.0.0.1:" + std::to_string(port) + path;
}

std::vector<Hit> CCollector::GetHits() const
{
    const std::lock_guard guard(lock);
    return hits;
}

std::size_t CCollector::GetConnectionCount() const
{
    const std::lock_guard guard(lock);
    return connectionCount;
}

bool CCollector::WaitForHits(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock guard(lock);
    return counted.wait_for(guard, timeout, [&] { return hitCount >= count; });
}

bool CCollector::WaitForConnections(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock guard(lock);
    return counted.wait_for(guard, timeout, [&] { return connectionCount >= count; });
}

bool CCollector::WaitUntilAnswered(std::chrono::milliseconds timeout) const
{
    std::unique_lock guard(lock);
    return counted.wait_for(guard, timeout, [&] { return answering == 0; });
}

void CCollector::Clear()
{
    const std::lock_guard guard(lock);
    hits.clear();
    hitCount = 0;
    connectionCount = 0;
}

void CCollector::Order(EConnectionFault fault, std::size_t count)
{
    const std::lock_guard guard(lock);
    if (count > 0)
        orderedFaults.push_back({fault, count});
}

void CCollector::Order(const Answer& answer, std::size_t count)
{
    const std::lock_guard guard(lock);
    if (count > 0)
        orderedAnswers.push_back({std::make_shared<const Answer>(answer), count});
}

void CCollector::AnswerPath(const std::string& path, const Answer& answer)
{
    const std::lock_guard guard(lock);
    pathAnswers[path] = std::make_shared<const Answer>(answer);
}

void CCollector::CancelOrders()
{
    const std::lock_guard guard(lock);
    orderedFaults.clear();
    orderedAnswers.clear();
    pathAnswers.clear();
}

void CCollector::Disconnect()
{
    const std::lock_guard guard(lock);
    for (const Running& running : connections)
        if (running.socket >= 0)
            ::shutdown(running.socket, SHUT_RDWR);
}

void CCollector::Refuse()
{
    StopListening();
    Disconnect();
    listening = BindLoopback(port);
}

void CCollector::Accept()
{
    if (acceptor.joinable())
        return;
    if (::listen(listening.Get(), SOMAXCONN) != 0)
        throw std::system_error(errno, std::generic_category(), "listen");
    accepting = true;
    acceptor = std::thread(&CCollector::RunAccepting, this);
}

void CCollector::Stop()
{
    StopListening();
    Disconnect();
    for (Running& running : connections) // nobody adds any more
        running.thread.join();
    connections.clear();
}

void CCollector::StopListening()
{
    accepting = false;
    if (listening)
        ::shutdown(listening.Get(), SHUT_RDWR);
    if (acceptor.joinable())
        acceptor.join();
    listening.Reset();
}

void CCollector::RunAccepting()
{
    IgnoreBrokenPipes();
    while (accepting)
    {
        CSocket accepted(::accept4(listening.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        JoinFinished();
        if (accepted)
            Start(std::move(accepted));
        else if (accepting && errno != EINTR && errno != ECONNABORTED)
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // out of descriptors
    }
}

void CCollector::Start(CSocket accepted)
{
    const std::lock_guard guard(lock);
    ++connectionCount;
    counted.notify_all();
    if (connections.size() >= settings.connections)
        return;
    const std::uint64_t number = ++lastConnection;
    const EConnectionFault fault = TakeOrdered(orderedFaults, EConnectionFault::None);
    Running& running = connections.emplace_back();
    running.socket = accepted.Get();
    try
    {
        running.thread =
            std::thread([this, &running, number, fault, socket = std::move(accepted)]() mutable {
                Run(running, std::move(socket), number, fault);
            });
    }
    catch (const std::system_error&)
    {
        connections.pop_back(); // no more threads: the client sees its connection end
    }
}

void CCollector::JoinFinished()
{
    std::list<Running> finished;
    {
        const std::lock_guard guard(lock);
        for (auto running = connections.begin(); running != connections.end();)
        {
            const auto next = std::next(running);
            if (running->socket < 0)
                finished.splice(finished.end(), connections, running);
            running = next;
        }
    }
    for (Running& running : finished)
        running.thread.join();
}

void CCollector::Run(Running& running, CSocket accepted, std::uint64_t number,
                     EConnectionFault fault) noexcept
{
    CConnection connection(std::move(accepted));
    try
    {
        Serve(connection, number, fault);
    }
    catch (const std::exception&)
    {
        // Out of memory: the client sees its connection end.
    }
    // The socket is given up under the lock and closed after it, so Disconnect() never meets a
    // descriptor that already belongs to somebody else.
    const std::lock_guard guard(lock);
    running.socket = -1;
}

void CCollector::Serve(CConnection& connection, std::uint64_t number, EConnectionFault fault)
{
    switch (fault)
    {
    case EConnectionFault::CloseBeforeTls:
        connection.DiscardGreeting();
        return;
    case EConnectionFault::StallHandshake:
        connection.WaitForEnd();
        return;
    case EConnectionFault::None:
    case EConnectionFault::UnknownCertificate:
    case EConnectionFault::WrongHostCertificate:
    case EConnectionFault::ExpiredCertificate:
        break;
    }
    if (connection.Handshake(GetContext(fault)))
        ServeRequests(connection, number);
}

void CCollector::ServeRequests(CConnection& connection, std::uint64_t number)
{
    CRequestReader reader([&](char* data, std::size_t size) { return connection.Read(data, size); },
                          settings.limits,
                          [&] { connection.Write("HTTP/1.1 100 Continue\r\n\r\n"); });
    for (;;)
    {
        Hit hit;
        hit.connection = number;
        const ERead read = reader.Read(hit);
        if (read == ERead::End)
            return;
        if (read != ERead::Request)
        {
            connection.Send(MakeRejection(read));
            return;
        }
        const bool stays = WantsToStay(hit);
        if (!AnswerHit(connection, hit) || !stays)
            return;
    }
}

bool CCollector::AnswerHit(CConnection& connection, Hit& hit)
{
    {
        const std::lock_guard guard(lock);
        ++answering;
    }
    const std::unique_ptr<CCollector, void (*)(CCollector*)> answered(this, [](CCollector* self) {
        const std::lock_guard guard(self->lock);
        --self->answering;
        self->counted.notify_all();
    });
    const AnswerPtr answer = TakeAnswer(hit);
    Record(hit);
    return connection.Send(*answer);
}

void CCollector::Record(Hit& hit)
{
    const std::lock_guard order(recording);
    hit.time = std::chrono::system_clock::now();
    {
        const std::lock_guard guard(lock);
        hit.sequence = ++lastHit;
    }
    if (settings.onHit)
        settings.onHit(hit);
    const std::lock_guard guard(lock);
    ++hitCount;
    if (settings.keepHits)
        hits.push_back(std::move(hit));
    counted.notify_all();
}

CCollector::AnswerPtr CCollector::TakeAnswer(const Hit& hit)
{
    const std::lock_guard guard(lock);
    if (!orderedAnswers.empty())
        return TakeOrdered(orderedAnswers, AnswerPtr());
    const auto found = pathAnswers.find(hit.target.substr(0, hit.target.find('?')));
    return found == pathAnswers.end() ? std::make_shared<const Answer>(MakeDefaultAnswer(hit))
                                      : found->second;
}

SSL_CTX& CCollector::GetContext(EConnectionFault fault) const
{
    return *(fault == EConnectionFault::UnknownCertificate     ? unknown
             : fault == EConnectionFault::WrongHostCertificate ? wrongHost
             : fault == EConnectionFault::ExpiredCertificate   ? expired
                                                               : trusted);
}

} // namespace collector
