#pragma once

#include <string>

namespace net {

// `text` as the value of a header field: control units, which would end the header or begin another
// one, become blanks. Any thread.
std::wstring MakeHeaderValue(std::wstring text);

} // namespace net
