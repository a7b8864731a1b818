#include "frame/UserAgent.h"

#include "net/HeaderValue.h"
#include "text/Format.h"

namespace frame {

std::wstring FormatUserAgent(std::wstring_view productName, std::wstring_view version,
                             std::wstring_view system)
{
    return text::FormatText(L"%s/%s (%s)", productName, version, system);
}

std::wstring FormatUserAgentHeader(std::wstring_view userAgent)
{
    return text::FormatText(L"User-Agent: %s\r\n", net::MakeHeaderValue(std::wstring(userAgent)));
}

} // namespace frame
