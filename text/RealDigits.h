#pragma once

#include <cstddef>
#include <string>

namespace text {

// The decimal digits of the magnitude of a finite number times 10 to the power of `precision`,
// rounded from its exact value to nearest, ties to even: "1235" for 12.345 and 2. At least
// `precision` + 1 digits. Any thread.
std::wstring MakeRealDigits(double value, std::size_t precision);

} // namespace text
