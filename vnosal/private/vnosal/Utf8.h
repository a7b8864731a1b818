#pragma once

#include <cstddef>
#include <string_view>

// UTF-8 (RFC 3629), the same on all systems. Any thread.
namespace VnOSAL {

// Both return the length of the whole result and write it where `out` is not null. `replaced`
// becomes true when U+FFFD stands for something that is no text.
std::size_t EncodeUtf8(std::wstring_view text, char* out, bool& replaced) noexcept;
std::size_t DecodeUtf8(std::string_view bytes, wchar_t* out, bool& replaced) noexcept;

} // namespace VnOSAL
