#include "net/CZoHTTPComunicator.h"

#include "net/HeaderValue.h"
#include "net/HttpExchange.h"
#include "platform/LastError.h"
#include "platform/ModuleState.h"
#include "platform/TraceMessage.h"

#include <utility>

namespace net {

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

// Milliseconds.
constexpr std::uint32_t connectTimeout = 5'000;
constexpr std::uint32_t transferTimeout = 120'000;

constexpr const wchar_t* deleteVerb = L"DELETE";

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
    const CHttpExchange::Request request{*content,
                                         url,
                                         verb,
                                         verb == deleteVerb ? std::string_view() : sent,
                                         askedPort == 0 ? securePort : askedPort,
                                         abortFlag};
    CHttpExchange(*this, request).Perform();
    *contentLength = static_cast<std::uint32_t>(content->size());
}
catch (...)
{
    RecordUnforeseen();
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
        errorCode = httpNoConnection;
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

void CZoHTTPComunicator::ClearErrors() noexcept
{
    cancelled = false;
    errorCode = 0;
    errorDetail = 0;
    platform::SetLastSystemError(0);
}

std::wstring CZoHTTPComunicator::FormatHeaders() const
{
    const VnCriticalSectionLock lock(headerLock);
    return text::FormatText(L"Accept: %s\r\nContent-Type: %s\r\nUser-Agent: %s\r\n",
                            MakeHeaderValue(accept), MakeHeaderValue(contentType),
                            MakeHeaderValue(agent));
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

void CZoHTTPComunicator::RecordUnforeseen() noexcept
{
    errorDetail = platform::GetLastSystemError();
    TraceMessage(errorLevel, L"HTTPCOM: Exception SendRequest");
    errorCode = httpUnforeseen;
}

} // namespace net
