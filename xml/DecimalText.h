#pragma once

#include <string_view>

namespace xml {

// The number that a text begins with, behind white space and a sign; what follows it is ignored, 0
// when there is none. A decimal comma counts as a decimal point, and an exponent is read: "3,5e1"
// is 35. Any thread.
double ReadNumber(std::string_view text);

} // namespace xml
