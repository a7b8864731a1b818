#pragma once

#include "vnosal/FileSystem.h"

#include <windows.h>

namespace VnOSAL {

// `tag` says what a reparse point is; 0 when the system does not tell.
EItemKind KindOf(DWORD attributes, DWORD tag) noexcept;

// Of a path that is in the system's form already.
SystemError ReadNativeFacts(const VnString& native, ELinks links, VnItemFacts& facts) noexcept;

} // namespace VnOSAL
