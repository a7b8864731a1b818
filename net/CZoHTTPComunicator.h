#pragma once

#include "net/HttpAddress.h"
#include "platform/Internet.h"
#include "platform/StopSignal.h"
#include "zotracker/vnosal/VnCriticalSection.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace net {

// What `errorCode` says where it is neither an HTTP status nor a WinINet error number.
inline constexpr std::int32_t httpNoConnection = 1;
inline constexpr std::int32_t httpNoAddress = 2;
inline constexpr std::int32_t httpNotSent = 3;
inline constexpr std::int32_t httpNotClosed = 4;
inline constexpr std::int32_t httpUnforeseen = 5;
inline constexpr std::int32_t httpRedirectedInPlace = 6;

// A small HTTPS client: one request at a time over one internet session. It follows 301 and 302
// itself, with the same verb and body, and returns the body of the final answer.
//
// No exception leaves it. Callers learn about a failure from `errorCode` and `errorDetail`:
//
//   errorCode     what happened                                   errorDetail
//   0             nothing worth recording                         0
//   1             the system has no connection at all             its last error
//   2             no address, or none that names a host           0
//   3             not connected to the internet                   the system's last error
//   3             connecting, opening or sending failed           WinINet error number
//   4             closing failed                                  WinINet error number
//   5             something unforeseen                            the thread's last error
//   6             a redirect back to the same address             the thread's last error
//   HTTP status   an answer other than 200; its body is returned  the same
//   other         reading the body failed: WinINet error number   unchanged
//
// A stop leaves the request in progress another half second, and a request that begins after it
// about two; then it fails (3, with "operation cancelled", or with 0 where nothing was sent yet),
// follows no further redirect and reads no more. A call of the system that is then under way gets
// another second.
//
// Threads: SetRequestHeaders and Cancel from any; all else from one at a time.
class CZoHTTPComunicator
{
public:
    using ProgressCallback = void (*)(double progress, void* context);

    // `stopSignal` must outlive the communicator. Opens nothing yet.
    explicit CZoHTTPComunicator(const platform::CStopSignal& stopSignal);
    virtual ~CZoHTTPComunicator();

    // GETs `url`. The low 16 bits of `port` count, 0 is 443; a port in the address is ignored.
    // Returns the body, empty after a failure.
    virtual std::string GetContent(std::wstring url, std::uint32_t port) noexcept;

    // POSTs the first `length` bytes of `body`, all of them for a negative length. Without a byte
    // to send it is a GET; a body that reads "DELETE" makes it a DELETE without a body.
    // `redirected` says that the address comes from a redirect, and changes nothing.
    std::string PostContent(std::wstring url, std::string_view body, std::int64_t length,
                            std::uint32_t port, bool redirected) noexcept;

    // The core of both. `content` receives the body and `contentLength` its length; without either
    // nothing is done. `url` is replaced by the address that a redirect leads to. Reading stops,
    // with what has come so far, when `*abortFlag` is set, and after 64 MB.
    void PerformRequest(std::string* content, std::uint32_t* contentLength, std::wstring& url,
                        std::string_view body, std::int64_t length, std::uint32_t port,
                        bool redirected, const std::atomic<bool>* abortFlag) noexcept;

    // Replaces the three header values that are not empty. Control units in them go out as blanks.
    void SetRequestHeaders(std::wstring contentType, std::wstring accept,
                           std::wstring agent) noexcept;

    // Who is told about progress, each may be null: while sending a fraction up to 1, while reading
    // a percentage, infinity when the length is unknown. Ends with 100 and a value of 0.
    void SetProgress(ProgressCallback callback, void* context, double* value) noexcept;

    // Stops the request in progress between two pieces of its body. A redirect forgets it.
    void Cancel() noexcept { cancelled = true; }

    bool IsBusy() const noexcept { return busy; }

    // True when the machine is connected to the internet.
    bool CheckConnection() noexcept;

    // True when a session exists afterwards. Requests open it by themselves.
    bool OpenSession() noexcept;
    void CloseSession() noexcept;

    static std::wstring GetObjectPath(std::wstring_view url, std::wstring_view host)
    {
        return net::GetObjectPath(url, host);
    }

    std::int32_t errorCode = 0;
    std::uint32_t errorDetail = 0;

private:
    friend class CHttpExchange; // one call of PerformRequest

    void ClearErrors() noexcept;
    std::wstring FormatHeaders() const;
    std::unique_ptr<platform::CInternetSession> CreateSession();
    void ReportProgress(double progress);
    void ReportEnd();
    void RecordUnforeseen() noexcept;

    std::unique_ptr<platform::CInternetSession> session;
    std::atomic<bool> busy{false};
    std::atomic<bool> cancelled{false};
    ProgressCallback progressCallback = nullptr;
    void* progressContext = nullptr;
    double* progressValue = nullptr;
    const platform::CStopSignal& stop;
    mutable VnOSAL::VnCriticalSection headerLock;
    std::wstring contentType ZO_LOCKING(guarded_by(headerLock)) = L"text/plain; charset=utf-8";
    std::wstring accept ZO_LOCKING(guarded_by(headerLock)) = L"*/*";
    std::wstring agent ZO_LOCKING(guarded_by(headerLock)) = L"ZoHTTPComunicator";
};

} // namespace net
