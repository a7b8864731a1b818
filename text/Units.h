#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Text as the registry and files keep it: two bytes for each unit, low byte first. Any thread.
namespace text {

std::vector<std::uint8_t> EncodeUnits(std::wstring_view units);

// An odd byte at the end is ignored.
std::wstring DecodeUnits(std::span<const std::uint8_t> bytes);

} // namespace text
