#include "frame/UrlDelivery.h"

namespace frame {

using platform::CInternetException;
using platform::CInternetSession;

namespace {

constexpr std::uint32_t connectTimeout = 5000; // milliseconds
constexpr std::uintptr_t requestContext = 1;

} // namespace

std::unique_ptr<CInternetSession> OpenDeliverySession(const std::wstring& agent,
                                                      const platform::CStopSignal& stop)
try
{
    return std::make_unique<CInternetSession>(agent, requestContext, stop);
}
catch (const CInternetException&)
{
    return nullptr;
}

bool OpenTrackingUrl(CInternetSession* session, const std::wstring& url,
                     const std::wstring& headers)
try
{
    if (session == nullptr)
        return false;
    session->SetOption(platform::EInternetOption::ConnectTimeout, connectTimeout);
    const auto answer = session->OpenURL(
        url, requestContext, platform::internetSecure | platform::internetTransferAscii, headers);
    return answer != nullptr;
}
catch (const CInternetException&)
{
    return false;
}

} // namespace frame
