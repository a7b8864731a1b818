#include "tests/simulated/Internet.h"

#include "platform/LastError.h"
#include "platform/Url.h"
#include "tests/simulated/VirtualTime.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>

namespace platform {

// One open session, connection or request; a child starts as a copy of what it came from.
struct InternetState
{
    InternetState(const CStopSignal& stopSignal);
    InternetState(const InternetState& from);
    ~InternetState();

    const CStopSignal& stop;
    simulated::SentRequest request{};
    simulated::Answer answer;
    std::size_t bytesRead = 0;
    std::size_t reads = 0;
    std::size_t index = 0; // of the noted request
    bool abandoned = false;
};

} // namespace platform

namespace simulated {

namespace {

using platform::CInternetException;
using platform::InternetState;

struct Internet
{
    std::mutex mutex;
    std::deque<Answer> script;
    std::vector<SentRequest> sent;
    bool connected = true;
    std::uint32_t connectedError = 0;
    platform::EConnectivity connectivity = platform::EConnectivity::Connected;
    std::uint32_t connectivityError = 0;
    int openHandles = 0;
};

Internet& GetInternet()
{
    static Internet* const internet = new Internet;
    return *internet;
}

// The answer that the next request will get.
Answer PeekAnswer()
{
    const std::lock_guard lock(GetInternet().mutex);
    return GetInternet().script.empty() ? Answer{} : GetInternet().script.front();
}

// Where that answer fails, before anything is sent: its body may be too long to copy for that.
ENetworkStage PeekFailure(std::uint32_t& error)
{
    const std::lock_guard lock(GetInternet().mutex);
    if (GetInternet().script.empty())
        return ENetworkStage::None;
    error = GetInternet().script.front().error;
    return GetInternet().script.front().failsAt;
}

void TakeAnswer()
{
    const std::lock_guard lock(GetInternet().mutex);
    if (!GetInternet().script.empty())
        GetInternet().script.pop_front();
}

// Stages up to the send use up their answer when they fail; later ones have taken it already.
void FailIfOrderedEarly(ENetworkStage stage)
{
    std::uint32_t error = 0;
    if (PeekFailure(error) != stage)
        return;
    TakeAnswer();
    throw CInternetException(error);
}

void FailIfOrdered(const InternetState& state, ENetworkStage stage)
{
    if (state.abandoned)
        throw CInternetException(platform::internetOperationCancelled);
    if (state.answer.failsAt == stage)
        throw CInternetException(state.answer.error);
}

std::chrono::milliseconds GetDeadline(InternetState& state)
{
    using platform::EInternetOption;
    auto& timeouts = state.request.timeouts;
    return std::chrono::milliseconds(timeouts[EInternetOption::ConnectTimeout] +
                                     std::max(timeouts[EInternetOption::SendTimeout],
                                              timeouts[EInternetOption::DataSendTimeout]) +
                                     std::max(timeouts[EInternetOption::ReceiveTimeout],
                                              timeouts[EInternetOption::DataReceiveTimeout]));
}

// Lets the answer's delay pass as the real calls do: not beyond the deadline, and one second at the
// most once a stop is requested.
void PassDelay(InternetState& state)
{
    using namespace std::chrono_literals;
    const auto deadline = GetDeadline(state);
    const auto untilAnswer = std::min(state.answer.delay, deadline);
    if (untilAnswer == 0ms)
        return;
    const std::int64_t start = GetElapsedMilliseconds();
    bool answered = state.answer.delay < deadline;
    if (state.stop.Wait(untilAnswer))
    {
        const auto rest = untilAnswer - std::chrono::milliseconds(GetElapsedMilliseconds() - start);
        answered = answered && rest <= 1000ms;
        WaitInVirtualTime([] { return false; }, std::min(rest, 1000ms));
    }
    if (answered)
        return;
    state.abandoned = true;
    throw CInternetException(platform::internetTimeout);
}

void NoteRequest(InternetState& state)
{
    TakeAnswer();
    const std::lock_guard lock(GetInternet().mutex);
    state.request.atMilliseconds = GetElapsedMilliseconds();
    state.index = GetInternet().sent.size();
    GetInternet().sent.push_back(state.request);
}

} // namespace

void ResetInternet()
{
    const std::lock_guard lock(GetInternet().mutex);
    GetInternet().script.clear();
    GetInternet().sent.clear();
    GetInternet().connected = true;
    GetInternet().connectedError = 0;
    GetInternet().connectivity = platform::EConnectivity::Connected;
    GetInternet().connectivityError = 0;
    GetInternet().openHandles = 0;
}

void AddAnswer(Answer answer)
{
    const std::lock_guard lock(GetInternet().mutex);
    GetInternet().script.push_back(std::move(answer));
}

void SetConnectedState(bool connected, std::uint32_t error)
{
    const std::lock_guard lock(GetInternet().mutex);
    GetInternet().connected = connected;
    GetInternet().connectedError = error;
}

void SetConnectivity(platform::EConnectivity connectivity, std::uint32_t error)
{
    const std::lock_guard lock(GetInternet().mutex);
    GetInternet().connectivity = connectivity;
    GetInternet().connectivityError = error;
}

std::vector<SentRequest> GetSentRequests()
{
    const std::lock_guard lock(GetInternet().mutex);
    return GetInternet().sent;
}

int GetOpenInternetHandles()
{
    const std::lock_guard lock(GetInternet().mutex);
    return GetInternet().openHandles;
}

} // namespace simulated

namespace platform {

using simulated::ENetworkStage;
using simulated::GetInternet;

InternetState::InternetState(const CStopSignal& stopSignal) : stop(stopSignal)
{
    const std::lock_guard lock(GetInternet().mutex);
    ++GetInternet().openHandles;
}

InternetState::InternetState(const InternetState& from) : InternetState(from.stop)
{
    request = from.request;
}

InternetState::~InternetState()
{
    const std::lock_guard lock(GetInternet().mutex);
    --GetInternet().openHandles;
}

CInternetSession::CInternetSession(const std::wstring& agent, std::uintptr_t,
                                   const CStopSignal& stop)
    : state(std::make_shared<InternetState>(stop))
{
    simulated::FailIfOrderedEarly(ENetworkStage::Session);
    state->request.agent = agent;
}

CInternetSession::~CInternetSession() = default;

void CInternetSession::SetOption(EInternetOption option, std::uint32_t value)
{
    state->request.timeouts[option] = value;
}

std::unique_ptr<CHttpConnection> CInternetSession::GetHttpConnection(const std::wstring& host,
                                                                     std::uint16_t port,
                                                                     std::uint32_t flags)
{
    simulated::FailIfOrderedEarly(ENetworkStage::Connect);
    auto opened = std::make_shared<InternetState>(*state);
    opened->request.host = host;
    opened->request.port = port;
    opened->request.connectionFlags = flags;
    return std::make_unique<CHttpConnection>(std::move(opened));
}

void CInternetSession::Close() { state.reset(); }

CHttpConnection::CHttpConnection(std::shared_ptr<InternetState> opened) noexcept
    : state(std::move(opened))
{}

CHttpConnection::~CHttpConnection() = default;

std::unique_ptr<CHttpFile> CHttpConnection::OpenRequest(const std::wstring& verb,
                                                        const std::wstring& object,
                                                        const std::wstring& referrer,
                                                        std::uintptr_t, std::uint32_t flags)
{
    simulated::FailIfOrderedEarly(ENetworkStage::OpenRequest);
    auto opened = std::make_shared<InternetState>(*state);
    opened->request.verb = verb;
    opened->request.object = EscapeObject(object);
    opened->request.referrer = referrer;
    opened->request.requestFlags = flags;
    // What happens to this request also happens when its connection is closed.
    state->answer.failsAt = simulated::PeekFailure(state->answer.error);
    return std::make_unique<CHttpFile>(std::move(opened));
}

void CHttpConnection::Close()
{
    const auto closing = std::move(state);
    if (closing && !closing->abandoned)
        simulated::FailIfOrdered(*closing, ENetworkStage::CloseConnection);
}

CHttpFile::CHttpFile(std::shared_ptr<InternetState> opened) noexcept : state(std::move(opened)) {}

CHttpFile::~CHttpFile() = default;

void CHttpFile::AddRequestHeaders(const std::wstring& headers, std::uint32_t)
{
    simulated::FailIfOrderedEarly(ENetworkStage::AddHeaders);
    state->request.headers += headers;
}

void CHttpFile::SendRequest()
{
    state->answer = simulated::PeekAnswer();
    simulated::NoteRequest(*state);
    simulated::PassDelay(*state);
    simulated::FailIfOrdered(*state, ENetworkStage::Send);
}

void CHttpFile::SendRequestEx(std::uint64_t)
{
    state->answer = simulated::PeekAnswer();
    simulated::NoteRequest(*state);
    simulated::FailIfOrdered(*state, ENetworkStage::Send);
}

void CHttpFile::Write(const char* bytes, std::size_t count)
{
    simulated::FailIfOrdered(*state, ENetworkStage::Write);
    const std::lock_guard lock(GetInternet().mutex);
    GetInternet().sent[state->index].body.append(bytes, count);
    GetInternet().sent[state->index].writes.push_back(count);
}

void CHttpFile::EndRequest()
{
    simulated::PassDelay(*state);
    simulated::FailIfOrdered(*state, ENetworkStage::EndRequest);
}

std::uint32_t CHttpFile::QueryStatusCode() { return state->answer.status; }

std::uint32_t CHttpFile::QueryContentLength() { return state->answer.contentLength; }

std::wstring CHttpFile::QueryContentLocation() { return state->answer.contentLocation; }

std::wstring CHttpFile::QueryLocation() { return state->answer.location; }

std::wstring CHttpFile::QueryRawHeaders() { return L"HTTP/1.1\r\n\r\n"; }

std::size_t CHttpFile::Read(char* buffer, std::size_t count)
{
    const std::string& body = state->answer.body;
    if (state->bytesRead == body.size()) // a broken connection breaks after what came before
        simulated::FailIfOrdered(*state, ENetworkStage::Read);
    const std::vector<std::size_t>& first = state->answer.firstReads;
    const std::size_t limit =
        state->reads < first.size() ? first[state->reads] : state->answer.bytesPerRead;
    ++state->reads;
    const std::size_t read = std::min({count, limit, body.size() - state->bytesRead});
    std::memcpy(buffer, body.data() + state->bytesRead, read);
    state->bytesRead += read;
    return read;
}

void CHttpFile::Abort() noexcept { state.reset(); }

void CHttpFile::Close()
{
    const auto closing = std::move(state);
    if (closing && !closing->abandoned)
        simulated::FailIfOrdered(*closing, ENetworkStage::CloseRequest);
}

bool GetConnectedState(const CStopSignal&, std::uint32_t& error)
{
    const std::lock_guard lock(GetInternet().mutex);
    error = GetInternet().connectedError;
    return GetInternet().connected;
}

EConnectivity QueryConnectivity(const CStopSignal&)
{
    const std::lock_guard lock(GetInternet().mutex);
    SetLastSystemError(GetInternet().connectivityError);
    return GetInternet().connectivity;
}

} // namespace platform
