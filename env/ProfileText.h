#pragma once

#include <string>

namespace env {

// A whole value of an initialisation file, or `defaultValue` where file, section or key is missing.
// Values longer than 261,119 units, which only a damaged file holds, are cut. Any thread.
std::wstring ReadProfileText(const std::wstring& section, const std::wstring& key,
                             const std::wstring& defaultValue, const std::wstring& path);

} // namespace env
