#pragma once

#include "platform/CodePage.h"

#include <string>

namespace simulated {

// The form under which the model files a name that ignores case.
inline std::wstring UpperCase(std::wstring text)
{
    for (wchar_t& unit : text)
        unit = platform::ToUpper(unit);
    return text;
}

} // namespace simulated
