#pragma once

#include "zotracker/vnosal/VnPath.h"

#include "vnosal/FileSystem.h"

#include <string>

// File names between UTF-16 and the system's bytes. Bytes that are no UTF-8 become the unpaired
// surrogates U+DC80 to U+DCFF, and these such bytes again, so that every name survives the way
// there and back.
namespace VnOSAL {

std::string ToNativeName(std::wstring_view name);
VnString FromNativeName(std::string_view name);

// A path with "/" between its names; false when it is empty or names a drive, a server or an
// address.
bool ToNativePath(const VnString& path, std::string& native);

// The result of a call that returns -1 on failure.
SystemError ErrorOf(long result) noexcept;

} // namespace VnOSAL
