#pragma once

#include <string>
#include <string_view>

namespace frame {

// "Product/1.2.3 (Windows NT 10.0; WOW64)". Any thread.
std::wstring FormatUserAgent(std::wstring_view productName, std::wstring_view version,
                             std::wstring_view system);

// The request header that carries it, ending in "\r\n". Control units, which would end the header,
// become blanks.
std::wstring FormatUserAgentHeader(std::wstring_view userAgent);

} // namespace frame
