#pragma once

#include <cstddef>

namespace VnOSAL {

// A finite number as the system's runtime prints it with "%.*f" and its like, in the current C
// locale. Returns the length, or at least `size` when that is too small.
std::size_t PrintDouble(char* buffer, std::size_t size, double value, char conversion,
                        int precision, bool alternate) noexcept;

// The number that a text begins with, in the current C locale; `end` is where it ends.
double ScanDouble(const char* text, char*& end) noexcept;

} // namespace VnOSAL
