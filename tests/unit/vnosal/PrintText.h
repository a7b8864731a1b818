#pragma once

#include "zotracker/vnosal/VnAString.h"

#include <ostream>
#include <string_view>

// How failed expectations show text.
namespace VnOSAL {

inline void PrintTo(const VnString& text, std::ostream* out)
{
    *out << '"' << std::string_view(VnAString(text, codePageUtf8)) << '"';
}

} // namespace VnOSAL
