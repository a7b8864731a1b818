#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Conversions and classifications that follow the system's own tables. Any thread.
namespace platform {

// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string EncodeUtf8(std::wstring_view text);

// UTF-8 to UTF-16 into `text`; bytes that are not UTF-8 become U+FFFD. Returns the number of
// units; 0, with `text` unchanged, when `bytes` is empty or the system fails.
std::size_t DecodeUtf8(std::string_view bytes, std::wstring& text);

// Bytes in the system's default code page to UTF-16.
std::wstring DecodeAnsi(std::string_view bytes);

// The C runtime's classification of one UTF-16 unit as a letter or digit. It comes from a fixed
// table, whatever locale the host has set.
bool IsAlphanumeric(wchar_t unit);

// The upper-case and lower-case forms of one UTF-16 unit by the system's invariant locale. The
// runtime's own forms change with the locale that the host has set for itself.
wchar_t ToUpper(wchar_t unit);
wchar_t ToLower(wchar_t unit);

} // namespace platform
