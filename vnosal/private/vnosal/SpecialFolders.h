#pragma once

#include "zotracker/vnosal/VnString.h"

namespace VnOSAL {

// The path of a shell special folder by its CSIDL number; empty when there is none. Any thread.
VnString QuerySpecialFolder(int number) noexcept;

} // namespace VnOSAL
