#pragma once

#include "vnosal/FileSystem.h"

#include <string>
#include <sys/stat.h>

namespace VnOSAL {

// The facts of a name in an open folder (or AT_FDCWD).
SystemError ReadFactsAt(int folder, const std::string& name, ELinks links,
                        VnItemFacts& facts) noexcept;

EItemKind KindOf(mode_t mode) noexcept;
timespec ToTimeSpec(std::int64_t time) noexcept; // `noTime` leaves the time as it is

} // namespace VnOSAL
