#pragma once

#include <cstdint>

// Characters beyond U+FFFF and the pairs of UTF-16 units that stand for them.
namespace VnOSAL {

constexpr bool IsSurrogate(std::uint32_t unit) noexcept { return (unit & 0xF800) == 0xD800; }

constexpr bool IsPair(wchar_t high, wchar_t low) noexcept
{
    return (high & 0xFC00) == 0xD800 && (low & 0xFC00) == 0xDC00;
}

constexpr std::uint32_t JoinPair(wchar_t high, wchar_t low) noexcept
{
    return 0x10000 + ((static_cast<std::uint32_t>(high) & 0x3FF) << 10) +
           (static_cast<std::uint32_t>(low) & 0x3FF);
}

constexpr wchar_t HighSurrogate(std::uint32_t character) noexcept
{
    return static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
}

constexpr wchar_t LowSurrogate(std::uint32_t character) noexcept
{
    return static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
}

} // namespace VnOSAL
