#include "platform/Internet.h"

#include "platform/ModuleState.h"
#include "platform/Url.h"
#include "platform/win32/DeadlineCall.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

namespace platform {

using std::chrono::milliseconds;

namespace {

// Time-outs of one session, in milliseconds; the defaults bound calls whose owner has set none.
struct Timeouts
{
    std::uint32_t connect = 30'000;
    std::uint32_t send = 30'000;
    std::uint32_t receive = 30'000;
    std::uint32_t dataSend = 30'000;
    std::uint32_t dataReceive = 30'000;

    std::uint32_t& operator[](EInternetOption option) noexcept
    {
        switch (option)
        {
        case EInternetOption::ConnectTimeout:
            return connect;
        case EInternetOption::SendTimeout:
            return send;
        case EInternetOption::ReceiveTimeout:
            return receive;
        case EInternetOption::DataSendTimeout:
            return dataSend;
        case EInternetOption::DataReceiveTimeout:
            break;
        }
        return dataReceive;
    }

    milliseconds ForSending() const { return milliseconds(std::max(send, dataSend)); }
    milliseconds ForReceiving() const { return milliseconds(std::max(receive, dataReceive)); }
    milliseconds ForWhole() const { return milliseconds(connect) + ForSending() + ForReceiving(); }
};

constexpr EInternetOption allOptions[] = {
    EInternetOption::ConnectTimeout, EInternetOption::SendTimeout, EInternetOption::ReceiveTimeout,
    EInternetOption::DataSendTimeout, EInternetOption::DataReceiveTimeout};

// Nothing shows on the wire of these: no dialogs, and no trace in the user's cache.
constexpr DWORD silent = INTERNET_FLAG_NO_UI | INTERNET_FLAG_NO_CACHE_WRITE;

// For calls that do not wait for the network.
constexpr milliseconds localCallLimit{10'000};

// The longest header of an answer that anybody asks for.
constexpr std::size_t maxHeaderUnits = 65'536;

DWORD GetFailure() noexcept
{
    const DWORD error = ::GetLastError();
    return error != 0 ? error : static_cast<DWORD>(ERROR_INTERNET_INTERNAL_ERROR);
}

DWORD ErrorOf(BOOL succeeded) noexcept { return succeeded ? 0 : GetFailure(); }

void SetTimeout(HINTERNET handle, EInternetOption option, std::uint32_t value)
{
    ::InternetSetOptionW(handle, static_cast<DWORD>(option), &value, sizeof(value));
}

} // namespace

// A handle with the handles it came from, which are closed after it. Closing waits for locks of the
// system's: Close() belongs to the threads of calls. The destructor may run on any thread.
struct InternetState
{
    InternetState(const CStopSignal& stopSignal, std::shared_ptr<InternetState> from)
        : stop(stopSignal), parent(std::move(from))
    {
        if (parent)
            timeouts = parent->timeouts;
    }
    InternetState(const InternetState&) = delete;
    InternetState& operator=(const InternetState&) = delete;

    // Handles that no call could close. The topmost takes those below it along, and Wine's do not
    // survive being closed by two threads at once.
    ~InternetState()
    {
        if (handle != nullptr && (!parent || parent.use_count() > 1))
            CloseApart();
    }

    BOOL Close() noexcept
    {
        const HINTERNET open = std::exchange(handle, nullptr);
        const BOOL closed = open == nullptr || ::InternetCloseHandle(open);
        // Wine's keeps the connection for the next request, which would begin inside the old body.
        // This makes it close what is idle, and look at the proxy's settings again.
        if (open != nullptr && brokenOff)
            ::InternetSetOptionW(nullptr, INTERNET_OPTION_SETTINGS_CHANGED, nullptr, 0);
        if (const HMODULE held = library.exchange(nullptr))
            ::FreeLibrary(held);
        return closed;
    }

    // Closes on a thread that begins in WinINet's code, for this module's may be gone by then.
    // WinINet stays in the process for it.
    void CloseApart() noexcept
    {
        InternetState* session = this;
        while (session->parent)
            session = session->parent.get();
        session->library = nullptr;
        const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
            reinterpret_cast<void*>(&::InternetCloseHandle));
        if (GetModuleState() != EModuleState::ProcessEnding)
            CKernelHandle(::CreateThread(nullptr, 0, routine, handle, 0, nullptr));
    }

    const CStopSignal& stop; // asked by the owner's thread only
    std::shared_ptr<InternetState> parent;
    HINTERNET handle = nullptr;
    std::atomic<HMODULE> library{nullptr}; // a session's reference to WinINet
    Timeouts timeouts;
    bool brokenOff = false; // the request's body was not sent to its end
    bool abandoned = false; // a call is still in flight; the owner's thread only
};

namespace {

using Shared = std::shared_ptr<InternetState>;

DWORD GetErrorOfGivenUp(const CStopSignal& stop) noexcept
{
    return stop.IsRequested() ? internetOperationCancelled : internetTimeout;
}

// Gives up a share and closes what nobody else needs, each handle before the one it came from. The
// first error of closing.
DWORD CloseUnneeded(Shared& state) noexcept
{
    DWORD error = 0;
    while (state.use_count() == 1)
    {
        const DWORD failure = ErrorOf(state->Close());
        error = error != 0 ? error : failure;
        state = Shared(std::move(state->parent));
    }
    state.reset();
    return error;
}

// Runs `call` within `limit`, throws the error number that it returns. It may outlast this
// function, and so has its own share of all it touches.
void Perform(const Shared& state, milliseconds limit, std::function<DWORD(InternetState&)> call)
{
    if (state->abandoned)
        throw CInternetException(internetOperationCancelled);
    const auto error = std::make_shared<DWORD>(ERROR_NOT_ENOUGH_MEMORY); // when the call throws
    const auto end = RunWithinDeadline(
        [error, own = state, call = std::move(call)]() mutable {
            *error = call(*own);
            CloseUnneeded(own);
        },
        limit, state->stop);
    if (end != ECallEnd::Returned)
    {
        state->abandoned = true;
        throw CInternetException(GetErrorOfGivenUp(state->stop));
    }
    if (*error != 0)
        throw CInternetException(*error);
}

// Gives up the owner's share, by a call, for it may be the last one. The error of closing.
DWORD Drop(Shared& state) noexcept
{
    if (!state)
        return 0;
    struct Last
    {
        Shared state;
        DWORD error = 0;
    };
    const CStopSignal& stop = state->stop;
    const bool abandoned = state->abandoned;
    std::shared_ptr<Last> last;
    ECallEnd end = ECallEnd::NotStarted;
    try
    {
        last = std::make_shared<Last>();
        last->state = std::move(state);
        end = RunWithinDeadline([last] { last->error = CloseUnneeded(last->state); },
                                localCallLimit, stop);
    }
    catch (const std::bad_alloc&)
    {}
    state.reset();
    if (abandoned)
        return 0;
    return end == ECallEnd::Returned ? last->error : GetErrorOfGivenUp(stop);
}

void CloseOwned(Shared& state)
{
    if (const DWORD error = Drop(state))
        throw CInternetException(error);
}

// Opens a handle below `parent` (none for a session) by `open`.
Shared OpenBelow(const CStopSignal& stop, const Shared& parent,
                 std::function<HINTERNET(InternetState&)> open)
{
    Shared created = std::make_shared<InternetState>(stop, parent);
    try
    {
        Perform(created, localCallLimit, [open = std::move(open)](InternetState& own) {
            own.handle = open(own);
            return own.handle != nullptr ? 0 : GetFailure();
        });
    }
    catch (...)
    {
        Drop(created);
        throw;
    }
    return created;
}

// The owner of what was opened. Without memory for it the share goes the way of all others.
template <class Owner>
std::unique_ptr<Owner> MakeOwner(Shared opened)
{
    try
    {
        return std::make_unique<Owner>(opened);
    }
    catch (const std::bad_alloc&)
    {
        Drop(opened);
        throw;
    }
}

std::wstring QueryHeader(const Shared& state, DWORD level)
{
    const auto text = std::make_shared<std::wstring>();
    Perform(state, localCallLimit, [text, level](InternetState& own) -> DWORD {
        DWORD bytes = 0;
        ::HttpQueryInfoW(own.handle, level, nullptr, &bytes, nullptr);
        if (bytes == 0 || bytes / sizeof(wchar_t) > maxHeaderUnits)
            return 0;
        text->resize(bytes / sizeof(wchar_t) + 1);
        bytes = static_cast<DWORD>(text->size() * sizeof(wchar_t));
        const BOOL found = ::HttpQueryInfoW(own.handle, level, text->data(), &bytes, nullptr);
        text->resize(found ? bytes / sizeof(wchar_t) : 0);
        return 0;
    });
    return *text;
}

std::uint32_t QueryNumber(const Shared& state, DWORD level)
{
    const auto number = std::make_shared<DWORD>(0);
    Perform(state, localCallLimit, [number, level](InternetState& own) -> DWORD {
        DWORD bytes = sizeof(DWORD);
        if (!::HttpQueryInfoW(own.handle, level | HTTP_QUERY_FLAG_NUMBER, number.get(), &bytes,
                              nullptr))
            *number = 0;
        return 0;
    });
    return *number;
}

} // namespace

// --- one request -------------------------------------------------------------------------------

CHttpFile::CHttpFile(std::shared_ptr<InternetState> opened) noexcept : state(std::move(opened)) {}

CHttpFile::~CHttpFile() { Drop(state); }

void CHttpFile::AddRequestHeaders(const std::wstring& headers, std::uint32_t flags)
{
    Perform(state, localCallLimit, [headers, flags](InternetState& own) {
        return ErrorOf(::HttpAddRequestHeadersW(own.handle, headers.data(),
                                                static_cast<DWORD>(headers.size()), flags));
    });
}

void CHttpFile::SendRequest()
{
    Perform(state, state->timeouts.ForWhole(), [](InternetState& own) {
        return ErrorOf(::HttpSendRequestW(own.handle, nullptr, 0, nullptr, 0));
    });
}

void CHttpFile::SendRequestEx(std::uint64_t total)
{
    Perform(state, state->timeouts.ForWhole(), [total](InternetState& own) {
        INTERNET_BUFFERSW buffers{};
        buffers.dwStructSize = sizeof(buffers);
        buffers.dwBufferTotal = static_cast<DWORD>(total);
        return ErrorOf(::HttpSendRequestExW(own.handle, &buffers, nullptr, HSR_INITIATE, 1));
    });
}

void CHttpFile::Write(const char* bytes, std::size_t count)
{
    Perform(state, state->timeouts.ForSending(),
            [copy = std::vector<char>(bytes, bytes + count)](InternetState& own) -> DWORD {
                for (std::size_t done = 0; done < copy.size();)
                {
                    DWORD written = 0;
                    if (!::InternetWriteFile(own.handle, copy.data() + done,
                                             static_cast<DWORD>(copy.size() - done), &written))
                        return GetFailure();
                    if (written == 0)
                        return ERROR_INTERNET_CONNECTION_ABORTED;
                    done += written;
                }
                return 0;
            });
}

void CHttpFile::EndRequest()
{
    Perform(state, state->timeouts.ForWhole(), [](InternetState& own) {
        return ErrorOf(::HttpEndRequestW(own.handle, nullptr, 0, 1));
    });
}

std::uint32_t CHttpFile::QueryStatusCode() { return QueryNumber(state, HTTP_QUERY_STATUS_CODE); }

std::uint32_t CHttpFile::QueryContentLength()
{
    return QueryNumber(state, HTTP_QUERY_CONTENT_LENGTH);
}

std::wstring CHttpFile::QueryContentLocation()
{
    return QueryHeader(state, HTTP_QUERY_CONTENT_LOCATION);
}

std::wstring CHttpFile::QueryLocation() { return QueryHeader(state, HTTP_QUERY_LOCATION); }

std::size_t CHttpFile::Read(char* buffer, std::size_t count)
{
    const auto block = std::make_shared<std::vector<char>>(count);
    Perform(state, state->timeouts.ForReceiving(), [block](InternetState& own) {
        DWORD read = 0;
        const DWORD error = ErrorOf(::InternetReadFile(own.handle, block->data(),
                                                       static_cast<DWORD>(block->size()), &read));
        block->resize(std::min<std::size_t>(read, block->size()));
        return error;
    });
    std::copy(block->begin(), block->end(), buffer);
    return block->size();
}

void CHttpFile::Abort() noexcept
{
    if (state)
        state->brokenOff = state->abandoned = true;
    Drop(state);
}

void CHttpFile::Close() { CloseOwned(state); }

// --- one connection ----------------------------------------------------------------------------

CHttpConnection::CHttpConnection(std::shared_ptr<InternetState> opened) noexcept
    : state(std::move(opened))
{}

CHttpConnection::~CHttpConnection() { Drop(state); }

std::unique_ptr<CHttpFile> CHttpConnection::OpenRequest(const std::wstring& verb,
                                                        const std::wstring& object,
                                                        const std::wstring& referrer,
                                                        std::uintptr_t context, std::uint32_t flags)
{
    return MakeOwner<CHttpFile>(OpenBelow(
        state->stop, state,
        [verb, escaped = EscapeObject(object), referrer, context, flags](InternetState& request) {
            const HINTERNET opened = ::HttpOpenRequestW(
                request.parent->handle, verb.c_str(), escaped.c_str(), L"HTTP/1.1",
                referrer.empty() ? nullptr : referrer.c_str(), nullptr, flags | silent, context);
            // No system's requests inherit every time-out of their session. Without a handle the
            // whole process's would change.
            const DWORD error = ::GetLastError();
            Timeouts timeouts = request.timeouts;
            for (const EInternetOption option : allOptions)
                if (opened != nullptr)
                    SetTimeout(opened, option, timeouts[option]);
            ::SetLastError(error);
            return opened;
        }));
}

void CHttpConnection::Close() { CloseOwned(state); }

// --- a session ---------------------------------------------------------------------------------

CInternetSession::CInternetSession(const std::wstring& agent, std::uintptr_t /*context*/,
                                   const CStopSignal& stop)
    : state(OpenBelow(stop, nullptr, [agent](InternetState& session) {
          HMODULE library = nullptr;
          ::GetModuleHandleExW(0, L"wininet.dll", &library);
          session.library = library;
          return ::InternetOpenW(agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
      }))
{}

CInternetSession::~CInternetSession() { Drop(state); }

void CInternetSession::SetOption(EInternetOption option, std::uint32_t value)
{
    state->timeouts[option] = value;
    Perform(state, localCallLimit, [option, value](InternetState& own) -> DWORD {
        SetTimeout(own.handle, option, value);
        return 0;
    });
}

std::unique_ptr<CHttpConnection> CInternetSession::GetHttpConnection(const std::wstring& host,
                                                                     std::uint16_t port,
                                                                     std::uint32_t flags)
{
    return MakeOwner<CHttpConnection>(
        OpenBelow(state->stop, state, [host, port, flags](InternetState& connection) {
            return ::InternetConnectW(connection.parent->handle, host.c_str(), port, nullptr,
                                      nullptr, INTERNET_SERVICE_HTTP, flags, 1);
        }));
}

void CInternetSession::Close() { CloseOwned(state); }

} // namespace platform
