#pragma once

#include "zotracker/vnosal/VnString.h"

// Between UTF-16 and what the system's wide interfaces take. Any thread.
namespace VnOSAL {

VnString ToNativeWide(const VnString& text) noexcept;
VnString FromNativeWide(const VnString& text) noexcept;

} // namespace VnOSAL
