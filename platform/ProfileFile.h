#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

// Initialisation files in the Windows profile format, through the system's own reader and writer
// (GetPrivateProfileStringW and its siblings). Section and key names ignore case. Any thread.
namespace platform {

// Copies the value of `key`, or `defaultValue` where file, section or key is missing, into
// `buffer`, always with a terminating zero. Returns the number of units copied without it;
// buffer.size() - 1 means that the value may have been cut.
std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path);

// The number that the value begins with, 0 when it begins with none; `defaultValue` where it is
// missing or empty. The system's reader knows signs and the prefixes "0x", "0o" and "0b", and wraps
// at 32 bits.
std::int32_t ReadProfileInt(const std::wstring& section, const std::wstring& key,
                            std::int32_t defaultValue, const std::wstring& path);

// Creates file, section and key as needed. True when the value was written.
bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path);

} // namespace platform
