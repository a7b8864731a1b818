#pragma once

#include "zotracker/vnosal/VnAString.h"

#include <ostream>
#include <string_view>

// How failed expectations show text.
namespace VnOSAL {

inline std::ostream& operator<<(std::ostream& out, const VnString& text)
{
    return out << std::string_view(VnAString(text, codePageUtf8));
}

} // namespace VnOSAL
