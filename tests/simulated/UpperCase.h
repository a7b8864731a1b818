#pragma once

#include "text/Case.h"

#include <string>

namespace simulated {

// The form under which the model files a name that ignores case.
inline std::wstring UpperCase(std::wstring name)
{
    text::MakeUpper(name);
    return name;
}

} // namespace simulated
