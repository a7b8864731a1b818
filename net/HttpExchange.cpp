#include "net/HttpExchange.h"

#include "net/BodyBlocks.h"
#include "net/CZoHTTPComunicator.h"
#include "platform/LastError.h"
#include "platform/TraceMessage.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace net {

using platform::CHttpConnection;
using platform::CHttpFile;
using platform::CInternetException;
using platform::TraceMessage;

namespace {

constexpr int errorLevel = 3;

constexpr std::uintptr_t context = 1;
constexpr std::size_t uploadPiece = 64'000; // bytes
constexpr std::size_t readPiece = 8'192;    // bytes
constexpr int emptyReadLimit = 10;
constexpr std::size_t bodyLimit = 64 << 20; // bytes

// How long a request may go on that a stop overtakes, and one that begins after it, in
// milliseconds. With the second that a call of the system may last beyond, and the one that was in
// progress when the stop came, each makes less than three seconds.
constexpr std::uint32_t graceOfCurrent = 500;
constexpr std::uint32_t graceOfLate = 1'900;

constexpr std::uint32_t statusDone = 200;

constexpr bool IsFollowed(std::uint32_t status) { return status == 301 || status == 302; }

// Where a redirect leads. A Location that names the current address leads nowhere.
std::wstring QueryTarget(CHttpFile& file, const std::wstring& current)
{
    std::wstring location = file.QueryContentLocation();
    if (!location.empty())
        return location;
    location = file.QueryLocation();
    return IsSameUrl(location, current) ? std::wstring() : location;
}

} // namespace

CHttpExchange::CHttpExchange(CZoHTTPComunicator& owner, const Request& asked)
    : client(owner),
      request(asked),
      grace(owner.stop, owner.stop.IsRequested() ? graceOfLate : graceOfCurrent)
{}

void CHttpExchange::Perform()
{
    while (PerformHop())
    {}
}

// --- the request -------------------------------------------------------------------------------

bool CHttpExchange::PerformHop()
{
    client.ClearErrors();
    if (!FindTarget() || !client.OpenSession() || !RequireConnection())
        return false;
    const ConnectionPtr connection = Connect();
    if (!connection)
        return false;
    const RequestPtr file = OpenRequest(*connection);
    if (!file)
    {
        Close(*connection);
        return false;
    }
    file->AddRequestHeaders(client.FormatHeaders(), platform::headerAdd | platform::headerReplace);
    if (Send(*file))
    {
        platform::SetLastSystemError(0);
        client.ReportProgress(0.0);
        const std::uint32_t status = file->QueryStatusCode();
        if (IsFollowed(status))
        {
            std::wstring location = QueryTarget(*file, url);
            Close(*file);
            Close(*connection);
            return TakeRedirect(std::move(location));
        }
        ReceiveAnswer(*file, status);
    }
    Close(*file);
    client.ReportEnd();
    Close(*connection);
    return false;
}

bool CHttpExchange::FindTarget()
{
    host.clear();
    if (request.url.empty())
        TraceMessage(errorLevel, L"HTTPCOM: empty URL");
    else if (url = NormalizeUrl(request.url, {}); !FindHost(url, host))
        TraceMessage(errorLevel, L"HTTPCOM: inncorrect URL %s", url);
    if (host.empty())
        client.errorCode = httpNoAddress;
    return !host.empty();
}

bool CHttpExchange::RequireConnection()
{
    if (!grace.IsOver() && client.CheckConnection())
        return true;
    TraceMessage(errorLevel, L"HTTPCOM: ERROR CheckConnection");
    client.errorCode = httpNotSent;
    client.errorDetail = platform::GetLastSystemError();
    return false;
}

CHttpExchange::ConnectionPtr CHttpExchange::Connect()
try
{
    return client.session->GetHttpConnection(
        host, request.port, platform::internetExistingConnect | platform::internetSecure);
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error GetHttpConnection");
    return nullptr;
}

CHttpExchange::RequestPtr CHttpExchange::OpenRequest(CHttpConnection& connection)
try
{
    return connection.OpenRequest(request.verb, GetObjectPath(url, host), url, context,
                                  platform::internetSecure | platform::internetNoAutoRedirect);
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error OpenRequest");
    return nullptr;
}

bool CHttpExchange::Send(CHttpFile& file)
try
{
    FailIfOver();
    if (!request.body.empty())
        return Upload(file);
    file.SendRequest();
    return true;
}
catch (const CInternetException& failure)
{
    RecordFailure(failure.error, L"HTTPCOM: Error SendRequest");
    return false;
}

bool CHttpExchange::Upload(CHttpFile& file)
{
    const std::size_t length = request.body.size();
    file.SendRequestEx(length);
    for (std::size_t sent = 0; sent < length && !client.cancelled;)
    {
        FailIfOver();
        const std::string_view piece = request.body.substr(sent, uploadPiece);
        file.Write(piece.data(), piece.size());
        sent += uploadPiece;
        client.ReportProgress(
            std::min(1.0, static_cast<double>(sent) / static_cast<double>(length)));
    }
    if (client.cancelled)
    {
        file.Abort();
        return false;
    }
    FailIfOver();
    file.EndRequest();
    client.ReportProgress(1.0);
    return true;
}

// --- its answer --------------------------------------------------------------------------------

void CHttpExchange::ReceiveAnswer(CHttpFile& file, std::uint32_t status)
{
    if (status != statusDone)
    {
        TraceMessage(errorLevel, L"HTTPCOM: Error HTTP Status %d", status);
        client.errorCode = static_cast<std::int32_t>(status);
        client.errorDetail = status;
    }
    ReceiveBody(file);
}

void CHttpExchange::ReceiveBody(CHttpFile& file)
{
    const std::uint32_t declared = file.QueryContentLength();
    const auto isWanted = [&](std::size_t received) {
        const bool complete = declared != 0 && received >= declared;
        const bool aborted = request.abortFlag != nullptr && *request.abortFlag;
        return !complete && !aborted && !client.cancelled && received < bodyLimit &&
               !grace.IsOver();
    };
    CBodyBlocks body;
    char piece[readPiece];
    for (int emptyReads = 0; emptyReads < emptyReadLimit && isWanted(body.GetSize());)
    {
        const std::size_t count = ReadPiece(file, piece);
        emptyReads = count > 0 ? 0 : emptyReads + 1;
        if (count == 0)
            continue;
        body.Append(piece, count);
        client.ReportProgress(declared == 0 ? std::numeric_limits<double>::infinity()
                                            : static_cast<double>(body.GetSize()) / declared * 100);
    }
    request.content = body.Join();
}

std::size_t CHttpExchange::ReadPiece(CHttpFile& file, char* piece)
try
{
    return file.Read(piece, readPiece);
}
catch (const CInternetException& failure)
{
    TraceMessage(errorLevel, L"HTTPCOM: Error read content %d", failure.error);
    client.errorCode = static_cast<std::int32_t>(failure.error);
    return 0;
}

bool CHttpExchange::TakeRedirect(std::wstring location)
{
    location = UpgradeScheme(location);
    if (IsSameUrl(location, url))
    {
        TraceMessage(errorLevel, L"HTTPCOM: Security Error Redir problem %s", url);
        client.errorCode = httpRedirectedInPlace;
        client.errorDetail = platform::GetLastSystemError();
        client.ReportEnd();
        return false;
    }
    request.url = location.empty() ? location : NormalizeUrl(std::move(location), host);
    return true;
}

// --- both --------------------------------------------------------------------------------------

template <class Handle>
void CHttpExchange::Close(Handle& handle)
try
{
    handle.Close();
}
catch (const CInternetException& failure)
{
    TraceMessage(errorLevel, L"HTTPCOM: Exception %d", failure.error);
    client.errorCode = httpNotClosed;
    client.errorDetail = failure.error;
}

void CHttpExchange::FailIfOver()
{
    if (grace.IsOver())
        throw CInternetException(platform::internetOperationCancelled);
}

void CHttpExchange::RecordFailure(std::uint32_t internetError, std::wstring_view trace) noexcept
{
    TraceMessage(errorLevel, trace);
    client.errorCode = httpNotSent;
    client.errorDetail = internetError;
}

} // namespace net
