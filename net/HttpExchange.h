#pragma once

#include "platform/Internet.h"
#include "platform/StopGrace.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace net {

class CZoHTTPComunicator;

// One request of the HTTPS client on its way along a chain of redirects. Failures are recorded in
// the client; what is thrown on the way is unforeseen.
//
// Threads: the client's.
class CHttpExchange
{
public:
    struct Request
    {
        std::string& content; // receives the body of the final answer
        std::wstring& url;    // replaced by the address that a redirect leads to
        const wchar_t* verb;
        std::string_view body; // empty unless the verb is POST
        std::uint16_t port;
        const std::atomic<bool>* abortFlag; // may be null
    };

    CHttpExchange(CZoHTTPComunicator& owner, const Request& asked);

    void Perform();

private:
    using RequestPtr = std::unique_ptr<platform::CHttpFile>;
    using ConnectionPtr = std::unique_ptr<platform::CHttpConnection>;

    // Performs one request of the chain; true when its answer leads to another one.
    bool PerformHop();
    bool FindTarget();
    bool RequireConnection();
    ConnectionPtr Connect();
    RequestPtr OpenRequest(platform::CHttpConnection& connection);
    bool Send(platform::CHttpFile& file);
    bool Upload(platform::CHttpFile& file);
    void ReceiveAnswer(platform::CHttpFile& file, std::uint32_t status);
    void ReceiveBody(platform::CHttpFile& file);
    std::size_t ReadPiece(platform::CHttpFile& file, char* piece);
    bool TakeRedirect(std::wstring location);
    template <class Handle>
    void Close(Handle& handle);
    void FailIfOver();
    void RecordFailure(std::uint32_t internetError, std::wstring_view trace) noexcept;

    CZoHTTPComunicator& client;
    const Request request;
    platform::CStopGrace grace;
    std::wstring url; // of the current hop, as its host
    std::wstring host;
};

} // namespace net
