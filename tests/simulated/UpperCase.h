#pragma once

#include "vnosal/CaseMap.h"

#include <string>

namespace simulated {

// The form under which the model files a name that ignores case.
inline std::wstring UpperCase(std::wstring text)
{
    VnOSAL::MapUpper(text.data(), text.size());
    return text;
}

} // namespace simulated
