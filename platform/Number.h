#pragma once

#include <string>

namespace platform {

// The double nearest to a decimal number: digits with at most one point, then perhaps an exponent
// ("-12.5e3"). The point is "." whatever locale the host has set. Beyond the range of a double the
// result is an infinity or 0. Any thread.
double ParseDecimal(const std::string& text);

} // namespace platform
