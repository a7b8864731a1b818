#pragma once

#include "zotracker/vnosal/VnAString.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// The system's code pages other than UTF-8. Any thread.
namespace VnOSAL {

// Both set `length` to that of the whole result, and write it where `out` is not null; it then has
// the room that an earlier call asked for.
EConversion EncodeCodePage(std::wstring_view text, std::uint32_t page, char* out,
                           std::size_t& length) noexcept;
EConversion DecodeCodePage(std::string_view bytes, std::uint32_t page, wchar_t* out,
                           std::size_t& length) noexcept;

} // namespace VnOSAL
