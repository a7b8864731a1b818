#pragma once

#include "platform/Registry.h"

#include <cstdint>
#include <string>

// Values of the registry as texts and numbers. Any thread, one at a time per key.
namespace env {

// Stores a text value with its terminator, creating the key when it is missing. Returns -1 on
// failure, 1 when the key existed already, 0 when it was created.
std::int32_t RegWriteString(platform::ERegistryRoot root, const std::wstring& subKey,
                            const std::wstring& valueName, const std::wstring& value,
                            bool use64BitView);

// The text of a value, whether it is stored with a terminator or not; expandable texts are
// expanded, a number gives its decimal text. Empty when it is missing, of another type, or longer
// than about a million units.
std::wstring RegReadString(const platform::CRegistryKey& openKey, const std::wstring& valueName);

// The number in a value, or the one that a text value begins with; 0 when it is missing or of
// another type.
std::uint32_t RegReadDword(const platform::CRegistryKey& openKey, const std::wstring& valueName);

} // namespace env
