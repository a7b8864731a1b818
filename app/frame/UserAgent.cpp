#include "app/frame/UserAgent.h"

#include "env/Format.h"

#include <algorithm>

namespace app {

std::wstring FormatUserAgent(std::wstring_view productName, std::wstring_view version,
                             std::wstring_view system)
{
    return env::FormatText(L"%s/%s (%s)", productName, version, system);
}

std::wstring FormatUserAgentHeader(std::wstring_view userAgent)
{
    std::wstring header(userAgent);
    std::replace_if(
        header.begin(), header.end(), [](wchar_t unit) { return unit < L' '; }, L' ');
    return env::FormatText(L"User-Agent: %s\r\n", header);
}

} // namespace app
