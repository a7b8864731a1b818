#pragma once

namespace text {

// The value of a decimal number in the form of the C locale, to the nearest; infinite when it is
// too large. Any thread.
double ReadDouble(const char* number) noexcept;

} // namespace text
