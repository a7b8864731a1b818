#pragma once

#include "zotracker/vnosal/VnString.h"

#include <cstdint>

namespace env {

// The locale code of a Windows language identifier (LANGID): "en_US" for 0x0409. Whoever evaluates
// the reports knows them by these codes, so those that follow no standard ("hsb_DE") stay as they
// are, too. An identifier without a code gives itself in upper-case hexadecimal: "[455]".
VnOSAL::VnString GetLanguageCode(std::uint16_t languageId);

} // namespace env
