#pragma once

#include "zotracker/vnosal/VnString.h"

#include <cstdint>

namespace env {

// The locale code of a Windows language identifier (LANGID), mostly language, "_", country. The
// codes are the vocabulary of the reports, irregular ones included, and stay as they are. An
// identifier without a code gives itself in upper-case hexadecimal, for example "[455]".
VnOSAL::VnString GetLanguageCode(std::uint16_t languageId);

} // namespace env
