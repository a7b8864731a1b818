#include "tests/simulated/Internet.h"

#include "platform/Clock.h"
#include "platform/LastError.h"
#include "platform/Url.h"
#include "tests/simulated/VirtualTime.h"

#include <algorithm>
#include <utility>

simulated::CState<simulated::Internet> simulated::internet;

namespace platform {

using namespace simulated;
using namespace std::chrono_literals;

// One open session, connection or request; a child starts as a copy of what it came from.
struct InternetState
{
    struct CountedHandle
    {
        CountedHandle() { ++internet->openHandles; }
        CountedHandle(const CountedHandle&) : CountedHandle() {}
        ~CountedHandle() { --internet->openHandles; }
    };

    const CStopSignal& stop;
    SentRequest request{};
    std::shared_ptr<const Answer> answer{}; // of a connection and its request
    std::size_t bytesRead = 0;
    std::size_t reads = 0;
    std::size_t index = 0; // of the noted request
    bool abandoned = false;
    CountedHandle counted{};
};

namespace {

Answer TakeAnswer()
{
    const auto held = internet.Hold();
    if (held->script.empty())
        return held->server();
    const Answer answer = held->script.front();
    held->script.pop_front();
    return answer;
}

void FailIfOrdered(const InternetState& state, ENetworkStage stage)
{
    if (state.abandoned)
        throw CInternetException(internetOperationCancelled);
    if (state.answer->failsAt == stage)
        throw CInternetException(state.answer->error);
}

// Lets the answer's delay pass as the real calls do: not beyond the deadline, and one second at the
// most once a stop is requested.
void PassDelay(InternetState& state)
{
    auto& timeouts = state.request.timeouts;
    const std::chrono::milliseconds deadline(timeouts[EInternetOption::ConnectTimeout] +
                                             timeouts[EInternetOption::SendTimeout] +
                                             timeouts[EInternetOption::ReceiveTimeout]);
    const auto untilAnswer = std::min(state.answer->delay, deadline);
    if (untilAnswer == 0ms)
        return;
    const std::int64_t start = GetElapsedMilliseconds();
    state.abandoned = state.answer->delay >= deadline;
    if (state.stop.Wait(untilAnswer))
    {
        const auto rest = untilAnswer - std::chrono::milliseconds(GetElapsedMilliseconds() - start);
        state.abandoned = state.abandoned || rest > 1000ms;
        Sleep(std::min(rest, 1000ms));
    }
    if (state.abandoned)
        throw CInternetException(internetTimeout);
}

void SendHead(InternetState& state)
{
    const auto held = internet.Hold();
    state.request.atMilliseconds = GetElapsedMilliseconds();
    state.index = held->sent.size();
    held->sent.push_back(state.request);
}

// What was given up closes without a word; so does what is closed already.
void Close(std::shared_ptr<InternetState>& state, ENetworkStage stage)
{
    const auto closing = std::move(state);
    if (closing && !closing->abandoned)
        FailIfOrdered(*closing, stage);
}

} // namespace

CInternetSession::CInternetSession(const std::wstring& agent, std::uintptr_t,
                                   const CStopSignal& stop)
    : state(new InternetState{stop})
{
    const auto held = internet.Hold();
    if (!held->script.empty() && held->script.front().failsAt == ENetworkStage::Session)
        throw CInternetException(TakeAnswer().error);
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
    auto opened = std::make_shared<InternetState>(*state);
    opened->answer = std::make_shared<Answer>(TakeAnswer());
    FailIfOrdered(*opened, ENetworkStage::Connect);
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
    FailIfOrdered(*state, ENetworkStage::OpenRequest);
    auto opened = std::make_shared<InternetState>(*state);
    opened->request.verb = verb;
    opened->request.object = EscapeObject(object);
    opened->request.referrer = referrer;
    opened->request.requestFlags = flags;
    return std::make_unique<CHttpFile>(std::move(opened));
}

void CHttpConnection::Close() { platform::Close(state, ENetworkStage::CloseConnection); }

CHttpFile::CHttpFile(std::shared_ptr<InternetState> opened) noexcept : state(std::move(opened)) {}
CHttpFile::~CHttpFile() = default;

void CHttpFile::AddRequestHeaders(const std::wstring& headers, std::uint32_t)
{
    FailIfOrdered(*state, ENetworkStage::AddHeaders);
    state->request.headers += headers;
}

void CHttpFile::SendRequest()
{
    SendHead(*state);
    PassDelay(*state);
    FailIfOrdered(*state, ENetworkStage::Send);
}

void CHttpFile::SendRequestEx(std::uint64_t)
{
    SendHead(*state);
    FailIfOrdered(*state, ENetworkStage::Send);
}

void CHttpFile::Write(const char* bytes, std::size_t count)
{
    FailIfOrdered(*state, ENetworkStage::Write);
    internet->sent[state->index].body.append(bytes, count);
}

void CHttpFile::EndRequest()
{
    PassDelay(*state);
    FailIfOrdered(*state, ENetworkStage::EndRequest);
}

std::uint32_t CHttpFile::QueryStatusCode() { return state->answer->status; }
std::uint32_t CHttpFile::QueryContentLength() { return state->answer->contentLength; }
std::wstring CHttpFile::QueryContentLocation() { return state->answer->contentLocation; }
std::wstring CHttpFile::QueryLocation() { return state->answer->location; }

std::size_t CHttpFile::Read(char* buffer, std::size_t count)
{
    const Answer& answer = *state->answer;
    if (state->bytesRead == answer.body.size()) // a broken connection breaks after what came before
        FailIfOrdered(*state, ENetworkStage::Read);
    if (state->reads < answer.firstReads.size())
        count = std::min(count, answer.firstReads[state->reads++]);
    count = answer.body.copy(buffer, count, state->bytesRead);
    state->bytesRead += count;
    return count;
}

void CHttpFile::Abort() noexcept { state.reset(); }
void CHttpFile::Close() { platform::Close(state, ENetworkStage::CloseRequest); }

bool GetConnectedState(const CStopSignal&, std::uint32_t& error)
{
    error = internet->connected.second;
    return internet->connected.first;
}

EConnectivity QueryConnectivity(const CStopSignal&)
{
    SetLastSystemError(internet->connectivity.second);
    return internet->connectivity.first;
}

} // namespace platform
