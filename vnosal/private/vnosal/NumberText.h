#pragma once

#include <cstddef>
#include <cstdint>

// Digits of numbers, the same on all systems.
namespace VnOSAL {

// Writes the digits of `value` so that they end before `end`; returns where they begin. A radix
// from 2 to 36 needs 64 units at most. `firstLetter` is 'a' or 'A'.
wchar_t* WriteDigits(wchar_t* end, std::uint64_t value, unsigned radix,
                     char firstLetter = 'a') noexcept;

// One floating-point number as printf writes it: `conversion` is one of the letters f e g (or
// their capitals), a negative precision is the default. Neither width nor flags, except that
// `alternate` keeps the decimal point. The result has a point in every locale, two digits of
// exponent at least, and "inf" or "nan" for what is no number. Returns the length, or what it would
// be when `size` is too small.
std::size_t WriteDouble(char* buffer, std::size_t size, double value, char conversion,
                        int precision, bool alternate) noexcept;

// The value of a decimal number in the form of the C locale, to the nearest; infinite when it is
// too large.
double ReadDouble(const char* text) noexcept;

} // namespace VnOSAL
