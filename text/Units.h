#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The UTF-16 units of texts. Any thread.
namespace text {

// Appends one unit, or the pair of units that stands for a character beyond U+FFFF.
void AppendCharacter(std::wstring& units, std::uint32_t character);

// Text as the registry and files keep it: two bytes for each unit, low byte first.
std::vector<std::uint8_t> EncodeUnits(std::wstring_view units);

// An odd byte at the end is ignored.
std::wstring DecodeUnits(std::span<const std::uint8_t> bytes);

} // namespace text
