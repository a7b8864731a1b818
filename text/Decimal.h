#pragma once

#include <cstdint>
#include <string_view>

// Numbers that a text begins with. Any thread.
namespace text {

// The integer that a text begins with, as the runtime's _wtoi and _wtoi64 read it: white space, a
// sign, decimal digits, the rest is ignored. 0 when there is none; the nearest limit when it does
// not fit.
std::int32_t ReadDecimal(std::wstring_view number) noexcept;
std::int32_t ReadDecimal(std::string_view number) noexcept;
std::int64_t ReadDecimal64(std::wstring_view number) noexcept;
std::int64_t ReadDecimal64(std::string_view number) noexcept;

// The value of a decimal number in the form of the C locale, to the nearest; infinite when it is
// too large.
double ReadDouble(const char* number) noexcept;

} // namespace text
