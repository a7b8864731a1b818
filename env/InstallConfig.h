#pragma once

#include <cstdint>
#include <string>

// The product's configuration: `install.cfg` beside the host's executable, an initialisation file
// in the Windows profile format. An empty `filePath` names that file.
//
// Nothing is kept between calls, so a change made by another process is seen by the next call.
// Any thread.
namespace env {

// The value, or `defaultValue` where file, section or key is missing.
std::wstring GetInstallConfigString(const std::wstring& section, const std::wstring& key,
                                    const std::wstring& defaultValue,
                                    const std::wstring& filePath = {});

// The leading integer of the value, 0 for a value without one; `defaultValue` where it is missing.
std::int32_t GetInstallConfigInt(const std::wstring& section, const std::wstring& key,
                                 std::int32_t defaultValue, const std::wstring& filePath = {});

// Creates file, section and key as needed. True when the value was written.
bool SetInstallConfigString(const std::wstring& section, const std::wstring& key,
                            const std::wstring& value, const std::wstring& filePath = {});

} // namespace env
