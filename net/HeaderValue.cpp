#include "net/HeaderValue.h"

#include <algorithm>

namespace net {

std::wstring MakeHeaderValue(std::wstring text)
{
    std::replace_if(
        text.begin(), text.end(), [](wchar_t unit) { return unit < L' '; }, L' ');
    return text;
}

} // namespace net
