#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Between UTF-16 units and the bytes of a code page, given by its Windows number. What is no text
// becomes the page's replacement. Any thread.
namespace text {

std::wstring DecodeBytes(std::string_view bytes, std::uint32_t codePage);
std::string EncodeBytes(std::wstring_view units, std::uint32_t codePage);

} // namespace text
