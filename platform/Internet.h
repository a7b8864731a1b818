#pragma once

#include "platform/StopSignal.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Internet sessions over the system's HTTP client, as the application framework's classes of the
// same names offer them (WinINet underneath). A failing call throws CInternetException with the
// WinINet error number.
//
// No call lasts longer than the sum of its time-outs, nor more than one second after a stop was
// requested: a call that does is abandoned and counts as failed, whatever the network does. An
// abandoned object refuses every further call.
//
// Threads: one at a time for a session and all that came from it.
namespace platform {

// The WinINet error numbers that the module itself produces.
inline constexpr std::uint32_t internetTimeout = 12002;
inline constexpr std::uint32_t internetInvalidUrl = 12005;
inline constexpr std::uint32_t internetUnrecognizedScheme = 12006;
inline constexpr std::uint32_t internetOperationCancelled = 12017;
inline constexpr std::uint32_t internetCannotConnect = 12029;

class CInternetException
{
public:
    explicit CInternetException(std::uint32_t raised) noexcept : error(raised) {}

    const std::uint32_t error;
};

// Time-outs in milliseconds, by their WinINet option numbers.
enum class EInternetOption : std::uint32_t
{
    ConnectTimeout = 2,
    SendTimeout = 5, // also of control connections
    ReceiveTimeout = 6,
    DataSendTimeout = 7,
    DataReceiveTimeout = 8
};

// Flags of connections and requests, with their WinINet values.
inline constexpr std::uint32_t internetTransferAscii = 0x00000001;
inline constexpr std::uint32_t internetNoAutoRedirect = 0x00200000;
inline constexpr std::uint32_t internetSecure = 0x00800000;
inline constexpr std::uint32_t internetExistingConnect = 0x20000000;

// Flags for adding headers, with their WinINet values.
inline constexpr std::uint32_t headerAdd = 0x20000000;
inline constexpr std::uint32_t headerReplace = 0x80000000;

struct InternetState; // one object of the system, shared with calls in flight

// One request and its answer.
class CHttpFile
{
public:
    explicit CHttpFile(std::shared_ptr<InternetState> opened) noexcept;
    ~CHttpFile(); // closes; a failure to close is dropped
    CHttpFile(const CHttpFile&) = delete;
    CHttpFile& operator=(const CHttpFile&) = delete;

    // `headers` are lines, each ending in "\r\n".
    void AddRequestHeaders(const std::wstring& headers, std::uint32_t flags);

    // Sends without a body and waits for the head of the answer.
    void SendRequest();

    // Sends the head of a request whose body has `total` bytes; Write and EndRequest follow.
    void SendRequestEx(std::uint64_t total);
    void Write(const char* bytes, std::size_t count);

    // Ends the request begun by SendRequestEx and waits for the head of the answer.
    void EndRequest();

    // The status number of the answer, 0 when there is none.
    std::uint32_t QueryStatusCode();

    // The declared length of the body; 0 when it is absent or not a number.
    std::uint32_t QueryContentLength();

    // One header of the answer, empty when absent.
    std::wstring QueryContentLocation();
    std::wstring QueryLocation();

    // Reads up to `count` bytes of the body; 0 at its end.
    std::size_t Read(char* buffer, std::size_t count);

    // Gives the request up without waiting for anything.
    void Abort() noexcept;

    // Closes the request; throws when that fails. A second call does nothing.
    void Close();

private:
    std::shared_ptr<InternetState> state;
};

// One connection to a server.
class CHttpConnection
{
public:
    explicit CHttpConnection(std::shared_ptr<InternetState> opened) noexcept;
    ~CHttpConnection();
    CHttpConnection(const CHttpConnection&) = delete;
    CHttpConnection& operator=(const CHttpConnection&) = delete;

    // Opens a request that carries the session's time-outs. `object` is path and query; a unit in
    // it that cannot stand in a request line goes out percent-encoded as UTF-8. The version is
    // HTTP/1.1.
    std::unique_ptr<CHttpFile> OpenRequest(const std::wstring& verb, const std::wstring& object,
                                           const std::wstring& referrer, std::uintptr_t context,
                                           std::uint32_t flags);

    void Close();

private:
    std::shared_ptr<InternetState> state;
};

// A session: an agent name, the system's preconfigured proxies, and time-outs.
class CInternetSession
{
public:
    // `stop` must outlive the session.
    CInternetSession(const std::wstring& agent, std::uintptr_t context, const CStopSignal& stop);
    ~CInternetSession();
    CInternetSession(const CInternetSession&) = delete;
    CInternetSession& operator=(const CInternetSession&) = delete;

    void SetOption(EInternetOption option, std::uint32_t milliseconds);

    std::unique_ptr<CHttpConnection> GetHttpConnection(const std::wstring& host, std::uint16_t port,
                                                       std::uint32_t flags);

    // GET of an absolute http or https address with additional `headers`; returns the opened
    // answer, whatever its status. With the flag internetSecure an http address counts as the https
    // one of the same server. Follows a bounded number of redirects, never from a secure
    // address to one that is not.
    std::unique_ptr<CHttpFile> OpenURL(const std::wstring& url, std::uintptr_t context,
                                       std::uint32_t flags, const std::wstring& headers);

    void Close();

private:
    std::shared_ptr<InternetState> state;
};

// Whether the system has a connection at all (InternetGetConnectedState). On false, `error` is the
// system's last error. A question that was given up counts as true. Bounded by one second after a
// stop request, as every call here.
bool GetConnectedState(const CStopSignal& stop, std::uint32_t& error);

// What the network list manager says of the connection to the internet. Whatever the question
// leaves as its thread's last system error becomes the caller's.
enum class EConnectivity
{
    Connected,
    NotConnected,
    CallFailed,     // the manager exists, the question failed
    ManagerMissing, // creating the manager failed
    NoManager,      // creating it reported success, but there is none
    Exception       // something unforeseen, or the question was given up
};
EConnectivity QueryConnectivity(const CStopSignal& stop);

} // namespace platform
