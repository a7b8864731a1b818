#include "net/CZoHTTPComunicator.h"

#include "net/BodyBlocks.h"
#include "net/HeaderValue.h"
#include "platform/LastError.h"
#include "platform/ModuleState.h"
#include "platform/TraceMessage.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace net {

using platform::CHttpConnection;
using platform::CHttpFile;
using platform::CInternetException;
using platform::CInternetSession;
using platform::EConnectivity;
using platform::EInternetOption;
using platform::TraceMessage;
using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr int errorLevel = 3;
constexpr int chatterLevel = 9;

constexpr std::uint16_t securePort = 443;
constexpr std::uintptr_t context = 1;
constexpr std::size_t uploadPiece = 64'000; // bytes
constexpr std::size_t readPiece = 8'192;    // bytes
constexpr int emptyReadLimit = 10;
constexpr std::size_t bodyLimit = 64 << 20; // bytes

// Milliseconds, as the others.
constexpr std::uint32_t connectTimeout = 5'000;
constexpr std::uint32_t transferTimeout = 120'000;

// How long a request may go on that a stop overtakes, and one that begins after it. With the second
// that a call of the system may last beyond, and the one that was in progress when the stop came,
// each makes less than three seconds.
constexpr std::uint32_t graceOfCurrent = 500;
constexpr std::uint32_t graceOfLate = 1'900;

constexpr std::uint32_t statusDone = 200;
constexpr const wchar_t* deleteVerb = L"DELETE";

constexpr bool IsFollowed(std::uint32_t status) { return status == 301 || status == 302; }

class CFlagScope
{
public:
    explicit CFlagScope(std::atomic<bool>& raised) noexcept : flag(raised) { flag = true; }
    ~CFlagScope() { flag = false; }
    CFlagScope(const CFlagScope&) = delete;
    CFlagScope& operator=(const CFlagScope&) = delete;

private:
    std::atomic<bool>& flag;
};

std::string_view TakePart(std::string_view body, std::int64_t length)
{
    return length < 0 ? body : body.substr(0, static_cast<std::uint64_t>(length));
}

// The body as text ends at its first zero byte.
bool ReadsDelete(std::string_view body) { return body.substr(0, body.find('\0')) == "DELETE"; }

const wchar_t* ChooseVerb(std::string_view body, std::string_view sent)
{
    if (sent.empty())
        return L"GET";
    return ReadsDelete(body) ? deleteVerb : L"POST";
}

// Where a redirect leads. A Location that names the current address leads nowhere.
std::wstring QueryTarget(CHttpFile& request, const std::wstring& current)
{
    std::wstring location = request.QueryContentLocation();
    if (!location.empty())
        return location;
    location = request.QueryLocation();
    return IsSameUrl(location, current) ? std::wstring() : location;
}

void FailIfOver(platform::CStopGrace& grace)
{
    if (grace.IsOver())
        throw CInternetException(platform::internetOperationCancelled);
}

} // namespace

CZoHTTPComunicator::CZoHTTPComunicator(const platform::CStopSignal& stopSignal) : stop(stopSignal)
{}

CZoHTTPComunicator::~CZoHTTPComunicator() { CloseSession(); }

// --- what owners call --------------------------------------------------------------------------

std::string CZoHTTPComunicator::GetContent(std::wstring url, std::uint32_t port) noexcept
{
    std::string content;
    std::uint32_t length = 0;
    PerformRequest(&content, &length, url, {}, -1, port, false, nullptr);
    return length > 0 ? std::move(content) : std::string();
}

std::string CZoHTTPComunicator::PostContent(std::wstring url, std::string_view body,
                                            std::int64_t length, std::uint32_t port,
                                            bool redirected) noexcept
{
    std::string content;
    std::uint32_t contentLength = 0;
    PerformRequest(&content, &contentLength, url, body, length, port, redirected, nullptr);
    return contentLength > 0 ? std::move(content) : std::string();
}

void CZoHTTPComunicator::SetRequestHeaders(std::wstring newContentType, std::wstring newAccept,
                                           std::wstring newAgent) noexcept
{
    const VnCriticalSectionLock lock(headerLock);
    if (!newContentType.empty())
        contentType = std::move(newContentType);
    if (!newAccept.empty())
        accept = std::move(newAccept);
    if (!newAgent.empty())
        agent = std::move(newAgent);
}

void CZoHTTPComunicator::SetProgress(ProgressCallback newCallback, void* newContext,
                                     double* newValue) noexcept
{
    progressCallback = newCallback;
    progressContext = newContext;
    progressValue = newValue;
}

void CZoHTTPComunicator::PerformRequest(std::string* content, std::uint32_t* contentLength,
                                        std::wstring& url, std::string_view body,
                                        std::int64_t length, std::uint32_t port, bool,
                                        const std::atomic<bool>* abortFlag) noexcept
try
{
    const CFlagScope busyScope(busy);
    ClearErrors();
    if (content == nullptr || contentLength == nullptr)
        return;
    content->clear();
    *contentLength = 0;
    const std::string_view sent = TakePart(body, length);
    const wchar_t* const verb = ChooseVerb(body, sent);
    const auto askedPort = static_cast<std::uint16_t>(port);
    Exchange exchange{
        *content,
        url,
        verb,
        verb == deleteVerb ? std::string_view() : sent,
        askedPort == 0 ? securePort : askedPort,
        abortFlag,
        platform::CStopGrace(stop, stop.IsRequested() ? graceOfLate : graceOfCurrent)};
    while (PerformHop(exchange))
    {}
    *contentLength = static_cast<std::uint32_t>(content->size());
}
catch (...)
{
    RecordUnforeseen();
}

// --- one request -------------------------------------------------------------------------------

bool CZoHTTPComunicator::PerformHop(Exchange& exchange)
{
    ClearErrors();
    std::wstring url;
    std::wstring host;
    if (!FindTarget(exchange, url, host) || !OpenSession() || !RequireConnection(exchange.grace))
        return false;
    const ConnectionPtr connection = Connect(host, exchange.port);
    if (!connection)
        return false;
    const RequestPtr request = OpenRequest(*connection, exchange, url, host);
    if (!request)
    {
        Close(*connection);
        return false;
    }
    request->AddRequestHeaders(FormatHeaders(), platform::headerAdd | platform::headerReplace);
    if (Send(*request, exchange))
    {
        platform::SetLastSystemError(0);
        ReportProgress(0.0);
        const std::uint32_t status = request->QueryStatusCode();
        if (IsFollowed(status))
        {
            std::wstring location = QueryTarget(*request, url);
            Close(*request);
            Close(*connection);
            return TakeRedirect(url, host, std::move(location), exchange);
        }
        ReceiveAnswer(*request, status, exchange);
    }
    Close(*request);
    ReportEnd();
    Close(*connection);
    return false;
}

void CZoHTTPComunicator::ClearErrors() noexcept
{
    cancelled = false;
    errorCode = 0;
    errorDetail = 0;
    platform::SetLastSystemError(0);
}

bool CZoHTTPComunicator::FindTarget(const Exchange& exchange, std::wstring& url, std::wstring& host)
{
    if (exchange.url.empty())
        TraceMessage(errorLevel, L"HTTPCOM: empty URL");
    else if (url = NormalizeUrl(exchange.url, {}); !FindHost(url, host))
        TraceMessage(errorLevel, L"HTTPCOM: inncorrect URL %s", url);
    if (host.empty())
        errorCode = 2;
    return !host.empty();
}

bool CZoHTTPComunicator::RequireConnection(platform::CStopGrace& grace)
{
    if (!grace.IsOver() && CheckConnection())
        return true;
    TraceMessage(errorLevel, L"HTTPCOM: ERROR CheckConnection");
    errorCode = 3;
    errorDetail = platform::GetLastSystemError();
    return false;
}

CZoHTTPComunicator::ConnectionPtr CZoHTTPComunicator::Connect(const std::wstring& host,
                                                              std::uint16_t port)
try
{
    return session->GetHttpConnection(host, port,
                                      platform::internetExistingConnect | platform::internetSecure);
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error GetHttpConnection");
    return nullptr;
}

CZoHTTPComunicator::RequestPtr CZoHTTPComunicator::OpenRequest(CHttpConnection& connection,
                                                               const Exchange& exchange,
                                                               const std::wstring& url,
                                                               const std::wstring& host)
try
{
    return connection.OpenRequest(exchange.verb, GetObjectPath(url, host), url, context,
                                  platform::internetSecure | platform::internetNoAutoRedirect);
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error OpenRequest");
    return nullptr;
}

std::wstring CZoHTTPComunicator::FormatHeaders() const
{
    const VnCriticalSectionLock lock(headerLock);
    return text::FormatText(L"Accept: %s\r\nContent-Type: %s\r\nUser-Agent: %s\r\n",
                            MakeHeaderValue(accept), MakeHeaderValue(contentType),
                            MakeHeaderValue(agent));
}

bool CZoHTTPComunicator::Send(CHttpFile& request, Exchange& exchange)
try
{
    FailIfOver(exchange.grace);
    if (!exchange.body.empty())
        return Upload(request, exchange);
    request.SendRequest();
    return true;
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error SendRequest");
    return false;
}

bool CZoHTTPComunicator::Upload(CHttpFile& request, Exchange& exchange)
{
    const std::size_t length = exchange.body.size();
    request.SendRequestEx(length);
    for (std::size_t sent = 0; sent < length && !cancelled;)
    {
        FailIfOver(exchange.grace);
        const std::string_view piece = exchange.body.substr(sent, uploadPiece);
        request.Write(piece.data(), piece.size());
        sent += uploadPiece;
        ReportProgress(std::min(1.0, static_cast<double>(sent) / static_cast<double>(length)));
    }
    if (cancelled)
    {
        request.Abort();
        return false;
    }
    FailIfOver(exchange.grace);
    request.EndRequest();
    ReportProgress(1.0);
    return true;
}

// --- its answer --------------------------------------------------------------------------------

void CZoHTTPComunicator::ReceiveAnswer(CHttpFile& request, std::uint32_t status, Exchange& exchange)
{
    if (status != statusDone)
    {
        TraceMessage(errorLevel, L"HTTPCOM: Error HTTP Status %d", status);
        errorCode = static_cast<std::int32_t>(status);
        errorDetail = status;
    }
    ReceiveBody(request, exchange);
}

void CZoHTTPComunicator::ReceiveBody(CHttpFile& request, Exchange& exchange)
{
    const std::uint32_t declared = request.QueryContentLength();
    const auto isWanted = [&](std::size_t received) {
        const bool complete = declared != 0 && received >= declared;
        const bool aborted = exchange.abortFlag != nullptr && *exchange.abortFlag;
        return !complete && !aborted && !cancelled && received < bodyLimit &&
               !exchange.grace.IsOver();
    };
    CBodyBlocks body;
    char piece[readPiece];
    for (int emptyReads = 0; emptyReads < emptyReadLimit && isWanted(body.GetSize());)
    {
        const std::size_t count = ReadPiece(request, piece);
        emptyReads = count > 0 ? 0 : emptyReads + 1;
        if (count == 0)
            continue;
        body.Append(piece, count);
        ReportProgress(declared == 0 ? std::numeric_limits<double>::infinity()
                                     : static_cast<double>(body.GetSize()) / declared * 100);
    }
    exchange.content = body.Join();
}

std::size_t CZoHTTPComunicator::ReadPiece(CHttpFile& request, char* piece)
try
{
    return request.Read(piece, readPiece);
}
catch (const CInternetException& failure)
{
    TraceMessage(errorLevel, L"HTTPCOM: Error read content %d", failure.error);
    errorCode = static_cast<std::int32_t>(failure.error);
    return 0;
}

bool CZoHTTPComunicator::TakeRedirect(const std::wstring& current, const std::wstring& host,
                                      std::wstring location, Exchange& exchange)
{
    location = UpgradeScheme(std::move(location));
    if (IsSameUrl(location, current))
    {
        TraceMessage(errorLevel, L"HTTPCOM: Security Error Redir problem %s", current);
        errorCode = 6;
        errorDetail = platform::GetLastSystemError();
        ReportEnd();
        return false;
    }
    exchange.url = location.empty() ? location : NormalizeUrl(std::move(location), host);
    return true;
}

// --- session, connection, progress -------------------------------------------------------------

bool CZoHTTPComunicator::OpenSession() noexcept
try
{
    if (!session)
        session = CreateSession();
    return session != nullptr;
}
catch (...)
{
    RecordUnforeseen();
    return false;
}

std::unique_ptr<CInternetSession> CZoHTTPComunicator::CreateSession()
{
    auto created = std::make_unique<CInternetSession>(L"ZOHTTPCOM_SESSION", context, stop);
    std::uint32_t error = 0;
    if (!platform::GetConnectedState(stop, error))
    {
        TraceMessage(errorLevel, L"HTTPCOM: Error GetConnectedState %d", error);
        errorCode = 1;
        errorDetail = error;
        return nullptr;
    }
    created->SetOption(EInternetOption::ConnectTimeout, connectTimeout);
    created->SetOption(EInternetOption::SendTimeout, transferTimeout);
    created->SetOption(EInternetOption::ReceiveTimeout, transferTimeout);
    return created;
}

void CZoHTTPComunicator::CloseSession() noexcept
{
    // At the end of the process a dead thread may hold the system's locks for ever.
    if (platform::GetModuleState() == platform::EModuleState::ProcessEnding)
        static_cast<void>(session.release());
    session.reset();
}

bool CZoHTTPComunicator::CheckConnection() noexcept
try
{
    const EConnectivity connectivity = platform::QueryConnectivity(stop);
    if (connectivity == EConnectivity::Exception)
        throw CInternetException(platform::internetOperationCancelled);
    if (connectivity == EConnectivity::ManagerMissing || connectivity == EConnectivity::NoManager)
        TraceMessage(chatterLevel, L"CZoHTTPComunicator::CheckConnection() # ERROR # "
                                   L"CoCreateInstance of IID_INetworkListManager failed.");
    if (connectivity == EConnectivity::Connected || connectivity == EConnectivity::NoManager)
        return true;
    TraceMessage(chatterLevel, L"CZoHTTPComunicator::CheckConnection() # ERROR # "
                               L"Call to get_IsConnectedToInternet failed.");
    return false;
}
catch (...)
{
    errorDetail = 1;
    TraceMessage(errorLevel, L"HTTPCOM: ERROR CheckConnection EXCEPTION");
    return false;
}

template <class Handle>
void CZoHTTPComunicator::Close(Handle& handle)
try
{
    handle.Close();
}
catch (const CInternetException& failure)
{
    TraceMessage(errorLevel, L"HTTPCOM: Exception %d", failure.error);
    errorCode = 4;
    errorDetail = failure.error;
}

void CZoHTTPComunicator::ReportProgress(double progress)
{
    if (progressValue != nullptr)
        *progressValue = progress;
    if (progressCallback != nullptr)
        progressCallback(progress, progressContext);
}

void CZoHTTPComunicator::ReportEnd()
{
    if (progressCallback != nullptr)
        progressCallback(100.0, progressContext);
    if (progressValue != nullptr)
        *progressValue = 0;
}

void CZoHTTPComunicator::RecordFailure(std::uint32_t internetError,
                                       std::wstring_view trace) noexcept
{
    TraceMessage(errorLevel, trace);
    errorCode = 3;
    errorDetail = internetError;
}

void CZoHTTPComunicator::RecordUnforeseen() noexcept
{
    errorDetail = platform::GetLastSystemError();
    TraceMessage(errorLevel, L"HTTPCOM: Exception SendRequest");
    errorCode = 5;
}

} // namespace net
